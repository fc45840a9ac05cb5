#pragma once

#include "common/SheetFrames.h"
#include "common/SpreadsheetConnection.h"

#include <QString>

#include <chrono>
#include <memory>

class QDeadlineTimer;
class QProcess;

namespace norvane {

/// A spreadsheet that is read by a separate process, under limits of memory and time: even if a
/// file crashes or hangs the libraries that read it, the console gets an answer or a failure.
class HelperConnection : public SpreadsheetConnection
{
public:
    /// @param program  the sheet reader
    /// @param limit    how long an answer may take
    explicit HelperConnection(QString program,
                              std::chrono::milliseconds limit = std::chrono::seconds(30));
    ~HelperConnection() override;

    void open(const QString &path) override;
    void close() override;
    QStringList errors() const override { return m_errors; }
    QStringList sheets() override;
    Table describe(const QString &sheet) override;
    std::unique_ptr<SheetRows> rows(const QString &sheet) override;

    /// Asks the reader.
    SheetFrames::Answer ask(const SheetFrames::Question &question);

private:
    enum class Waiting {
        Blocked,
        PaintingWindows, ///< what the operator does meanwhile is handled later
    };
    void start();
    SheetFrames::Answer ask(const SheetFrames::Question &question, Waiting waiting);
    QByteArray receive(qsizetype count, const QDeadlineTimer &deadline, Waiting waiting);
    void await(const QDeadlineTimer &deadline, Waiting waiting);
    [[noreturn]] void fail(const QString &description);

    const QString m_program;
    const std::chrono::milliseconds m_limit;
    std::unique_ptr<QProcess> m_process;
    QStringList m_sheets;
    QStringList m_errors;
};

} // namespace norvane
