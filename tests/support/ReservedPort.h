#pragma once

namespace norvane {

/// A port of 127.0.0.1 that the system gives to nobody else as long as this lasts. Whoever is told
/// its number can listen there, with SO_REUSEADDR.
class ReservedPort
{
public:
    ReservedPort();
    ~ReservedPort();
    ReservedPort(const ReservedPort &) = delete;
    ReservedPort &operator=(const ReservedPort &) = delete;

    int number() const { return m_number; }

private:
    const int m_descriptor;
    int m_number = 0;
};

} // namespace norvane
