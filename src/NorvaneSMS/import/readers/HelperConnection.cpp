#include "NorvaneSMS/import/readers/HelperConnection.h"

#include "common/FailureNumbers.h"
#include "foundation/FailureTexts.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// UTF-16 units that the rows of one query may hold together. A file of a megabyte can name one
/// long text a million times.
constexpr qint64 maxUnits = 128 << 20;

/// The rows of a query, fetched as many at a time as the reader gives.
class HelperRows : public SheetRows
{
public:
    HelperRows(HelperConnection &connection, QString sheet, qint32 count)
        : m_connection(connection), m_sheet(std::move(sheet)), m_count(count)
    {}

    bool isAtEnd() const override { return m_row >= m_count; }

    std::optional<QString> value(const QString &field) override
    {
        if (isAtEnd())
            SheetFailure::raiseNoCurrentRecord();
        if (field != m_field || m_row < m_first || m_row - m_first >= m_values.size())
            fetch(field);
        return m_values.at(m_row - m_first);
    }

    void moveNext() override { ++m_row; }

private:
    void fetch(const QString &field)
    {
        m_values = m_connection.ask({SheetFrames::Operation::Values, m_sheet, field, m_row}).values;
        m_field = field;
        m_first = m_row;
        for (const std::optional<QString> &value : std::as_const(m_values))
            m_units += value ? value->size() : 0;
        if (m_values.isEmpty() || m_units > maxUnits) {
            m_values.clear();
            SheetFailure::raise(SheetFailure::BadFile, u"The sheet holds too much text."_s);
        }
    }

    HelperConnection &m_connection;
    const QString m_sheet;
    const qint32 m_count;
    qint32 m_row = 0;
    qint32 m_first = 0;
    qint64 m_units = 0;
    QString m_field;
    QList<std::optional<QString>> m_values;
};

} // namespace

HelperConnection::HelperConnection(QString program, std::chrono::milliseconds limit)
    : m_program(std::move(program)), m_limit(limit)
{}

HelperConnection::~HelperConnection()
{
    HelperConnection::close();
}

void HelperConnection::open(const QString &path)
{
    close();
    m_errors.clear();
    start();
    try {
        m_sheets = ask({SheetFrames::Operation::Open, path, {}, 0}, Waiting::PaintingWindows).names;
    } catch (const NumberedFailure &failure) {
        m_errors = {failure.description()};
        close();
        throw;
    }
}

void HelperConnection::close()
{
    if (!m_process)
        return;
    m_process->kill();
    m_process->waitForFinished();
    m_process.reset();
    m_sheets.clear();
}

QStringList HelperConnection::sheets()
{
    if (!m_process)
        Failure::raise(Failure::ObjectClosed, u"HelperConnection"_s);
    return m_sheets;
}

SpreadsheetConnection::Table HelperConnection::describe(const QString &sheet)
{
    const SheetFrames::Answer answer = ask({SheetFrames::Operation::Describe, sheet, {}, 0});
    return {answer.names, answer.rows};
}

std::unique_ptr<SheetRows> HelperConnection::rows(const QString &sheet)
{
    return std::make_unique<HelperRows>(*this, sheet, describe(sheet).rows);
}

void HelperConnection::start()
{
    m_process = std::make_unique<QProcess>();
    m_process->setStandardErrorFile(QProcess::nullDevice());
    m_process->start(m_program, QStringList());
    if (!m_process->waitForStarted()) {
        m_process.reset();
        throw NumberedFailure(Failure::CannotCreateObject, u"HelperConnection"_s,
                              FailureText::programNotFound(m_program));
    }
}

SheetFrames::Answer HelperConnection::ask(const SheetFrames::Question &question)
{
    return ask(question, Waiting::Blocked);
}

SheetFrames::Answer HelperConnection::ask(const SheetFrames::Question &question, Waiting waiting)
{
    if (!m_process)
        Failure::raise(Failure::ObjectClosed, u"HelperConnection"_s);
    m_process->write(SheetFrames::framed(SheetFrames::encode(question)));
    const QDeadlineTimer deadline(m_limit);
    const quint32 length = SheetFrames::bodyLength(receive(sizeof(quint32), deadline, waiting));
    if (length > SheetFrames::maxBytes)
        fail(u"The file holds too much."_s);
    const auto reply = SheetFrames::decodeReply(receive(length, deadline, waiting));
    if (!reply)
        fail(u"The file can't be read."_s);
    if (!reply->has_value())
        throw NumberedFailure(reply->error());
    return reply->value();
}

QByteArray HelperConnection::receive(qsizetype count, const QDeadlineTimer &deadline,
                                     Waiting waiting)
{
    while (m_process->bytesAvailable() < count) {
        if (m_process->state() == QProcess::NotRunning)
            fail(u"The file can't be read: it takes too much memory or time, or is damaged."_s);
        if (deadline.hasExpired())
            fail(u"The file can't be read: it takes too long."_s);
        await(deadline, waiting);
    }
    return m_process->read(count);
}

/// Returns when there may be more to read, when the reader has ended, or at the deadline.
void HelperConnection::await(const QDeadlineTimer &deadline, Waiting waiting)
{
    const int left = static_cast<int>(deadline.remainingTime());
    if (waiting == Waiting::PaintingWindows) {
        QEventLoop loop;
        QObject::connect(m_process.get(), &QProcess::readyRead, &loop, &QEventLoop::quit);
        QObject::connect(m_process.get(), &QProcess::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(left, &loop, &QEventLoop::quit);
        if (loop.exec(QEventLoop::ExcludeUserInputEvents) == 0)
            return;
    }
    // Also where the program is about to end, and no loop runs any more.
    m_process->waitForReadyRead(left);
}

void HelperConnection::fail(const QString &description)
{
    close();
    SheetFailure::raise(SheetFailure::BadFile, description);
}

} // namespace norvane
