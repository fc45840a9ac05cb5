#include "TovekSMService/store/PostgresText.h"

#include <QScopeGuard>
#include <QStringList>

#include <libpq-fe.h>

namespace norvane {

using namespace Qt::StringLiterals;

QByteArray PostgresText::withNumberedPlaces(const QByteArray &statement)
{
    QByteArray numbered;
    int place = 0;
    bool isLiteral = false;
    for (const char each : statement) {
        if (each == '\'')
            isLiteral = !isLiteral;
        if (each == '?' && !isLiteral)
            numbered += '$' + QByteArray::number(++place);
        else
            numbered += each;
    }
    return numbered.replace(" LIKE ", " ILIKE ");
}

QByteArray PostgresText::of(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? "t" : "f";
    QString text = value.toString();
    return text.replace(QChar::Null, u' ').toUtf8();
}

QString PostgresText::array(const QList<qint64> &values)
{
    QString text = u"{"_s;
    for (const qint64 value : values) {
        if (text.size() > 1)
            text += u',';
        text += QString::number(value);
    }
    return text + u'}';
}

QString PostgresText::array(const QStringList &values)
{
    QString text = u"{"_s;
    for (const QString &value : values) {
        if (text.size() > 1)
            text += u',';
        QString quoted = value;
        quoted.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
        text += u'"' + quoted + u'"';
    }
    return text + u'}';
}

bool PostgresText::hasPassword(const QString &conninfo)
{
    PQconninfoOption *const options = PQconninfoParse(conninfo.toUtf8().constData(), nullptr);
    if (options == nullptr)
        return conninfo.contains("password"_L1, Qt::CaseInsensitive);
    const auto release = qScopeGuard([options] { PQconninfoFree(options); });
    for (const PQconninfoOption *option = options; option->keyword != nullptr; ++option) {
        const QLatin1String name(option->keyword);
        if ((name == "password"_L1 || name == "sslpassword"_L1) && option->val != nullptr &&
            *option->val != '\0')
            return true;
    }
    return false;
}

} // namespace norvane
