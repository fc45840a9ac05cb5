#include "harness/DoubtJudge.h"

#include "harness/SharingEngine.h"
#include "harness/StoreReader.h"

namespace norvane {

using namespace Qt::StringLiterals;

void DoubtJudge::beginCycle()
{
    m_silent.clear();
    m_kept.clear();
}

void DoubtJudge::noteSilent(const SharingEngine &engine)
{
    m_silent.insert(engine.name());
}

int DoubtJudge::noteKept(const SharingEngine &engine)
{
    const auto kept = StoreReader(engine.sandbox.storeFile()).kept();
    if (!kept)
        return -1;
    for (const qint64 id : *kept)
        m_kept.insert(QString::number(id));
    return static_cast<int>(kept->size());
}

/// What is in doubt before the next start was left so by a process that lived.
bool DoubtJudge::noteKilled(const SharingEngine &engine)
{
    judge();
    const QString ofEngine = u" FROM engine WHERE name = '%1'"_s.arg(engine.name());
    const auto epoch = m_database.ask(u"SELECT epoch"_s + ofEngine);
    const auto taken = m_database.ask(u"SELECT phone, message_id FROM outcome WHERE code = -39 AND "
                                      "reporter <> engine AND engine IN (SELECT id"_s +
                                      ofEngine + u')');
    if (noteKept(engine) < 0 || !epoch || !taken)
        return false;
    if (!epoch->isEmpty())
        m_lastDead[engine.name()] = epoch->constFirst().constFirst().toLongLong();
    for (const QStringList &row : *taken) {
        if (m_silent.contains(engine.name()) && !m_kept.contains(row.at(1)))
            m_excused.insert(row.at(0));
    }
    return true;
}

void DoubtJudge::judge()
{
    const auto doubts =
        m_database.ask(u"SELECT outcome.id, phone, message_id, name, outcome.epoch, "
                       "reporter = engine FROM outcome JOIN engine ON engine.id = outcome.engine "
                       "WHERE code = -39"_s);
    if (!doubts) {
        m_problems.fault(&Tally::stuck, u"did not come: the messages in doubt"_s);
        return;
    }
    for (const QStringList &row : *doubts) {
        const QString &phone = row.at(1);
        const QString &engine = row.at(3);
        if (m_judged.contains(row.at(0)))
            continue;
        m_judged.insert(row.at(0));
        const bool isOwn = row.at(5) == "t"_L1;
        const bool isOfDead = row.at(4).toLongLong() <= m_lastDead.value(engine, -1);
        if (!isOwn && !m_silent.contains(engine))
            m_problems.fault(&Tally::untrue, phone + u" was taken over from engine "_s + engine +
                                                 u", which was not silent"_s);
        else if (isOwn && !isOfDead)
            m_problems.fault(&Tally::untrue,
                             phone + u" is in doubt although engine %1 lived on"_s.arg(engine));
        else if (isOwn && m_kept.contains(row.at(2)))
            m_problems.fault(&Tally::untrue,
                             phone + u" is in doubt although engine %1 had written down what "
                                     "became of it"_s.arg(engine));
        else if (isOwn)
            m_excused.insert(phone);
    }
}

} // namespace norvane
