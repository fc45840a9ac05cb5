#include "TovekSMService/history/IndexMark.h"

#include "TovekSMService/store/SettingTable.h"

#include <QChar>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString settingName()
{
    return u"history_index"_s;
}

/// Stands before the id. Texts are folded otherwise with another version of Unicode.
QString folding()
{
    return u"1.%1:"_s.arg(static_cast<int>(QChar::currentUnicodeVersion()));
}

} // namespace

StoreResult<qint64> IndexMark::value() const
{
    return SettingTable(m_database).value(settingName()).map([](const QString &text) {
        return text.startsWith(folding()) ? text.mid(folding().size()).toLongLong() : 0;
    });
}

StoreResult<> IndexMark::set(qint64 id)
{
    return SettingTable(m_database).write(settingName(), folding() + QString::number(id));
}

} // namespace norvane
