#pragma once

#include <QObject>
#include <QString>

namespace norvane {

class DetailsPane;
class HistorySource;
class MessageActions;

/// The phone of the chosen message: whether it wants no campaigns, and the buttons that answer it
/// and change that.
class ChosenPhone : public QObject
{
    Q_OBJECT

public:
    /// @param source, actions, details  must outlive this object
    ChosenPhone(HistorySource &source, MessageActions &actions, DetailsPane &details,
                QObject *parent);

    /// @param message  its id
    void choose(qint64 message, const QString &phone);
    void chooseNone();
    /// Looks whether it wants campaigns now.
    void refresh();

private:
    HistorySource &m_source;
    DetailsPane &m_details;
    qint64 m_message = 0; ///< 0 while none is chosen
    QString m_phone;
};

} // namespace norvane
