#include "TovekSMService/store/Statement.h"

#include "TovekSMService/store/Sql.h"

#include <QSqlError>

#include <utility>

namespace norvane {

void Statements::drop()
{
    m_prepared.clear();
    m_database = QSqlDatabase();
}

Statement::~Statement()
{
    if (m_query)
        m_query->finish();
}

StoreResult<> Statement::prepare()
{
    auto found = m_statements.m_prepared.find(m_text);
    if (found == m_statements.m_prepared.end()) {
        StoreResult<QSqlQuery> query = prepared(m_statements.m_database, m_text);
        if (!query)
            return failed(query.error());
        found = m_statements.m_prepared.emplace(m_text, std::move(*query)).first;
    }
    m_query = &found->second;
    return {};
}

StoreResult<> Statement::run(const QVariantList &values)
{
    if (StoreResult<> ready = prepare(); !ready)
        return ready;
    for (int place = 0; place < values.size(); ++place) {
        const QVariant &value = values.at(place);
        m_query->bindValue(place, value.typeId() == QMetaType::QString
                                      ? QVariant(boundText(value.toString()))
                                      : value);
    }
    return execute(*m_query);
}

StoreResult<bool> Statement::next()
{
    if (m_query->next())
        return true;
    if (m_query->lastError().isValid())
        return failed(StoreFailure(m_query->lastError()));
    return false;
}

} // namespace norvane
