#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

namespace norvane {

/// The far end of a pseudo-terminal, which plays a transcript: whenever what it has read ends with
/// the next line of the transcript, it writes that line's answer.
class PtyModem : public QObject
{
    Q_OBJECT

public:
    struct Turn
    {
        QByteArray hears;
        QByteArray says;
    };

    PtyModem();
    ~PtyModem() override;

    /// Path of the near end.
    const QString &path() const { return m_path; }

    void play(const QList<Turn> &turns) { m_turns = turns; }
    /// Answers every submission of a message, without end.
    void submitForever() { m_forever = true; }
    void say(const QByteArray &bytes);
    /// Takes the device away.
    void unplug();

    QByteArray heard;
    int submissions = 0;

private:
    void onReadable();
    void answer();

    int m_master = -1;
    QString m_path;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QList<Turn> m_turns;
    QByteArray m_pending;
    bool m_forever = false;
};

} // namespace norvane
