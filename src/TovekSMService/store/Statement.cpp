#include "TovekSMService/store/Statement.h"

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/Transaction.h"

#include <QSqlError>

namespace norvane {

void Statements::drop()
{
    m_prepared.clear();
    m_database = QSqlDatabase();
}

Statement::Statement(Statements &statements, const char *text)
    : m_query(find(statements, QLatin1String(text)))
{}

QSqlQuery &Statement::find(Statements &statements, QLatin1String text)
{
    auto found = statements.m_prepared.find(text);
    if (found == statements.m_prepared.end())
        found = statements.m_prepared.insert(text, prepared(statements.m_database, text));
    return *found;
}

void Statement::run(const QVariantList &values)
{
    for (int place = 0; place < values.size(); ++place)
        m_query.bindValue(place, values.at(place));
    execute(m_query);
}

bool Statement::next()
{
    if (m_query.next())
        return true;
    if (m_query.lastError().isValid())
        throw StoreFailure(m_query.lastError());
    return false;
}

} // namespace norvane
