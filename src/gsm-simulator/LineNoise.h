#pragma once

#include <QByteArray>

#include <random>

namespace norvane {

namespace simulator {

/// What a bad line adds between the lines of a modem: a few bytes that belong to no answer. The
/// same seed gives the same bytes. Neither line ends nor letters, digits or prompts are among them.
class LineNoise
{
public:
    explicit LineNoise(unsigned seed) : m_generator(seed) {}

    /// One burst of 0 to 6 bytes.
    QByteArray burst()
    {
        QByteArray bytes(static_cast<qsizetype>(m_generator() % 7), '\0');
        for (char &byte : bytes)
            byte = static_cast<char>(0x80 + m_generator() % 0x80);
        return bytes;
    }

private:
    std::mt19937 m_generator;
};

} // namespace simulator

} // namespace norvane
