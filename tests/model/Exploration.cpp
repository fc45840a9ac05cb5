#include "model/Exploration.h"

#include "model/ClaimModel.h"
#include "model/ClaimProperties.h"
#include "model/Simplification.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvane::model {

namespace {

using Index = std::uint32_t;

/// Breadth first, so that the first violation is reached by a shortest way.
class Explorer
{
public:
    explicit Explorer(const Rules &rules) : m_rules(rules) {}

    Exploration run();

private:
    struct Visit
    {
        State state;
        Index parent;
        Step step;
    };

    /// A step without a fault. States without such a step are ends.
    struct Arrow
    {
        Index from;
        Index to;
    };

    Index visit(const State &state, Index parent, const Step &step);
    void expand(Index index);
    void judge(const Move &move, Index from);
    void judgeEnd(Index index);
    void findEndless();
    std::vector<bool> statesThatEnd() const;
    void fail(std::string_view violation, Index index);

    Rules m_rules;
    std::unordered_map<State, Index, StateHash> m_known;
    std::vector<Visit> m_visits;
    std::vector<Arrow> m_arrows;
    std::vector<Index> m_ends;
    Exploration m_result;
};

Index Explorer::visit(const State &state, Index parent, const Step &step)
{
    const auto [place, isNew] =
        m_known.try_emplace(ordered(state), static_cast<Index>(m_visits.size()));
    if (isNew)
        m_visits.push_back({state, parent, step});
    return place->second;
}

void Explorer::fail(std::string_view violation, Index index)
{
    std::string trace;
    for (; index != 0; index = m_visits[index].parent)
        trace = textOf(m_visits[index].step) + ".\n" + trace;
    m_result.violation = violation;
    m_result.trace = trace;
}

/// Looks at the state as it is before anything is left out of it.
void Explorer::judge(const Move &move, Index from)
{
    std::string_view violation = violationBy(move, m_visits[from].state);
    if (violation.empty())
        violation = violationIn(move.state);
    if (violation.empty())
        return;
    fail(violation, from);
    m_result.trace += textOf(move.step) + ".\n";
}

void Explorer::judgeEnd(Index index)
{
    m_ends.push_back(index);
    const std::string_view violation = violationAtEnd(m_visits[index].state);
    if (!violation.empty())
        fail(violation, index);
}

void Explorer::expand(Index index)
{
    bool isEnd = true;
    for (const Move &move : movesFrom(m_visits[index].state, m_rules)) {
        const auto kind = static_cast<std::size_t>(move.step.kind);
        (move.step.answer == Answer::Late ? m_result.takenLate : m_result.taken)[kind] = true;
        judge(move, index);
        if (!m_result.violation.empty())
            return;
        const Index next = visit(simplified(move.state, m_rules), index, move.step);
        if (isFault(move.step))
            continue;
        isEnd = false;
        m_arrows.push_back({index, next});
    }
    if (isEnd)
        judgeEnd(index);
}

/// Follows the arrows backwards from the ends.
std::vector<bool> Explorer::statesThatEnd() const
{
    std::vector<std::size_t> first(m_visits.size() + 1, 0);
    for (const Arrow &arrow : m_arrows)
        ++first[arrow.to];
    std::partial_sum(first.begin(), first.end(), first.begin());
    std::vector<Index> sources(m_arrows.size());
    for (const Arrow &arrow : m_arrows)
        sources[--first[arrow.to]] = arrow.from;

    std::vector<bool> ends(m_visits.size(), false);
    std::vector<Index> open = m_ends;
    while (!open.empty()) {
        const Index state = open.back();
        open.pop_back();
        if (ends[state])
            continue;
        ends[state] = true;
        const auto begin = sources.begin();
        open.insert(open.end(), begin + first[state], begin + first[state + 1]);
    }
    return ends;
}

void Explorer::findEndless()
{
    const std::vector<bool> ends = statesThatEnd();
    const auto endless = std::find(ends.begin(), ends.end(), false);
    if (endless != ends.end())
        fail("no end can be reached", static_cast<Index>(endless - ends.begin()));
}

Exploration Explorer::run()
{
    visit(State{}, 0, {});
    for (Index index = 0; index < m_visits.size() && m_result.violation.empty(); ++index)
        expand(index);
    if (m_result.violation.empty())
        findEndless();
    m_result.states = m_visits.size();
    return std::move(m_result);
}

} // namespace

Exploration explore(const Rules &rules)
{
    return Explorer(rules).run();
}

} // namespace norvane::model
