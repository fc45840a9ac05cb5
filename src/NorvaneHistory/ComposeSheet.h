#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace norvane {

class MessageEdit;
class PhoneEdit;

/// A small window in which an answer is written, with the console's limit of characters.
class ComposeSheet : public QDialog
{
    Q_OBJECT

public:
    /// @param text  what is written already
    ComposeSheet(const QString &phone, const QString &text, QWidget *parent = nullptr);

    QString phone() const;
    /// As it was typed.
    QString text() const;

private:
    void showLength();

    PhoneEdit *m_phone;
    MessageEdit *m_text;
    QLabel *m_length;
    QPushButton *m_send;
};

} // namespace norvane
