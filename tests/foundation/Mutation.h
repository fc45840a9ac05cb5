#pragma once

#include <QByteArray>

#include <algorithm>
#include <random>

namespace norvane {

/// Damages good files in ways that repeat from run to run.
class Mutation
{
public:
    explicit Mutation(quint32 seed) : m_random(seed) {}

    QByteArray of(const QByteArray &good)
    {
        QByteArray bytes = good;
        const int steps = below(6) + 1;
        for (int i = 0; i < steps && !bytes.isEmpty(); ++i)
            step(bytes);
        return bytes;
    }

private:
    int below(qsizetype bound)
    {
        return std::uniform_int_distribution<int>(0, static_cast<int>(bound) - 1)(m_random);
    }

    void step(QByteArray &bytes)
    {
        const int at = below(bytes.size());
        const int length = std::min(below(64) + 1, static_cast<int>(bytes.size()) - at);
        switch (below(6)) {
        case 0:
            bytes[at] = static_cast<char>(below(256));
            break;
        case 1:
            bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << below(8)));
            break;
        case 2:
            bytes.remove(at, length);
            break;
        case 3:
            bytes.insert(below(bytes.size()), bytes.mid(at, length));
            break;
        case 4:
            bytes.truncate(at);
            break;
        default:
            bytes[at] = "<>&\"'=/[];%\\\n\0!?"[below(16)];
            break;
        }
    }

    std::mt19937 m_random;
};

} // namespace norvane
