#include "NorvaneHistory/ListOutput.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "common/Csv.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QApplication>
#include <QDateTime>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 pageRows = 1000;

/// Draws the lines of a table from the top of a page to its end.
class TablePainter
{
public:
    TablePainter(const OutputList &list, QPrinter &printer)
        : m_list(list), m_printer(printer), m_painter(&printer)
    {
        QFont font = QApplication::font();
        m_painter.setFont(font);
        m_lineHeight = QFontMetricsF(font, &printer).lineSpacing() * lineSpacing;
    }

    bool isActive() const { return m_painter.isActive(); }

    /// @return false if the printer fails on the way
    bool draw(const QList<QStringList> &rows)
    {
        beginPage();
        for (const QStringList &row : rows) {
            if (m_y + 2 * m_lineHeight > height()) {
                if (!m_printer.newPage())
                    return false;
                beginPage();
            }
            drawLine(row);
        }
        return m_painter.end();
    }

private:
    static constexpr qreal lineSpacing = 1.25;

    qreal width() const { return m_painter.viewport().width(); }
    qreal height() const { return m_painter.viewport().height(); }

    void beginPage()
    {
        ++m_page;
        m_y = 0;
        const QRectF head(0, 0, width(), m_lineHeight);
        m_painter.drawText(head, Qt::AlignLeft, m_list.title);
        m_painter.drawText(head, Qt::AlignRight, QString::number(m_page));
        m_y += 2 * m_lineHeight;
        QFont bold = m_painter.font();
        const QFont plain = bold;
        bold.setBold(true);
        m_painter.setFont(bold);
        drawLine(m_list.captions);
        m_painter.setFont(plain);
        m_painter.drawLine(QPointF(0, m_y), QPointF(width(), m_y));
        m_y += m_lineHeight / 2;
    }

    void drawLine(const QStringList &fields)
    {
        constexpr int whole = 100;
        const QFontMetricsF metrics(m_painter.font(), &m_printer);
        qreal x = 0;
        for (qsizetype at = 0; at < fields.size(); ++at) {
            const qreal columnWidth = width() * m_list.widths.value(at) / whole;
            const QString text = metrics.elidedText(HistoryTexts::oneLine(fields.at(at)),
                                                    Qt::ElideRight, columnWidth - m_lineHeight / 2);
            m_painter.drawText(QRectF(x, m_y, columnWidth, m_lineHeight),
                               Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
            x += columnWidth;
        }
        m_y += m_lineHeight;
    }

    const OutputList &m_list;
    QPrinter &m_printer;
    QPainter m_painter;
    qreal m_lineHeight = 0;
    qreal m_y = 0;
    int m_page = 0;
};

} // namespace

ListWalk::ListWalk(OutputList list, Take take, QObject *parent)
    : QObject(parent), m_list(std::move(list)), m_take(std::move(take))
{}

void ListWalk::start()
{
    fetch({});
}

void ListWalk::cancel()
{
    m_isCancelled = true;
}

void ListWalk::fetch(const QString &after)
{
    m_list.fetch(this, {after, {}, pageRows},
                 [this, after](const SourceResult<Page<QStringList>> &page) {
                     if (m_isCancelled)
                         return;
                     if (page)
                         take(*page);
                     else if (page.error().kind == SourceFailure::Kind::Superseded)
                         fetch(after); // by the question of a walk that was cancelled
                     else
                         Q_EMIT failed(page.error());
                 });
}

void ListWalk::take(const Page<QStringList> &page)
{
    const bool wantsMore = m_take(page.rows);
    m_rows += page.rows.size();
    Q_EMIT advanced(m_rows);
    if (m_isCancelled)
        return;
    if (wantsMore && !page.next.isEmpty())
        fetch(page.next);
    else
        Q_EMIT finished();
}

QByteArray ListOutput::csvRecord(const QStringList &fields, const QList<bool> &areOurs)
{
    QStringList written;
    for (qsizetype at = 0; at < fields.size(); ++at)
        written << (areOurs.value(at) ? fields.at(at) : Csv::field(fields.at(at)));
    return (written.join(u',') + QString::fromUtf16(Csv::lineEnd)).toUtf8();
}

QByteArray ListOutput::csvHead(const OutputList &list)
{
    return "\xEF\xBB\xBF" + csvRecord(list.captions);
}

bool ListOutput::print(const OutputList &list, const QList<QStringList> &rows, QPrinter &printer)
{
    TablePainter painter(list, printer);
    return painter.isActive() && painter.draw(rows);
}

} // namespace norvane
