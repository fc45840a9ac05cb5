#include "TovekSMService/history/IndexMark.h"

#include "TovekSMService/store/SettingTable.h"

#include <QChar>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString settingOf(HistoryTable table)
{
    return table == HistoryTable::Outcomes ? u"history_index"_s : u"inbox_index"_s;
}

constexpr QLatin1StringView foldingPrefix = "1."_L1;

/// Stands before the id. Texts are folded otherwise with another version of Unicode.
QString folding()
{
    return foldingPrefix + QString::number(static_cast<int>(QChar::currentUnicodeVersion())) + u':';
}

} // namespace

StoreResult<qint64> IndexMark::value() const
{
    return SettingTable(m_database).value(settingOf(m_table)).map([](const QString &text) {
        return text.startsWith(folding()) ? text.mid(folding().size()).toLongLong() : 0;
    });
}

StoreResult<bool> IndexMark::isOfLaterFolding() const
{
    return SettingTable(m_database).value(settingOf(m_table)).map([](const QString &text) {
        const QString version = text.section(u':', 0, 0).mid(foldingPrefix.size());
        return text.startsWith(foldingPrefix) && version.toInt() > QChar::currentUnicodeVersion();
    });
}

StoreResult<> IndexMark::set(qint64 id)
{
    return SettingTable(m_database).write(settingOf(m_table), folding() + QString::number(id));
}

} // namespace norvane
