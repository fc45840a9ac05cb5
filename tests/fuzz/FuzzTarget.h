#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace norvane {

// A fuzz target is one file that defines LLVMFuzzerTestOneInput. It is linked with libFuzzer, or
// with ReplayMain.cpp where the compiler has none.

/// Takes one input of any bytes. A violated expectation ends the process.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size);

/// Prepares the process: an application object, and folders of its own for whatever is stored.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

/// A folder of this process alone, removed at its end.
QString fuzzFolder();

/// Aborts with `expectation` on standard error unless `holds`.
void expectThat(bool holds, const char *expectation);

/// Makes values of the bytes of an input, from its front. At its end they are 0 and empty.
class FuzzInput
{
public:
    FuzzInput(const quint8 *data, std::size_t size)
        : m_bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
    {}

    bool atEnd() const { return m_position >= m_bytes.size(); }
    quint8 takeByte();
    /// A number from 0 to below `limit`, which is at most 65536.
    int takeNumber(int limit);
    /// At most `max` bytes, as many as the length of 16 bits in front of them says.
    QByteArray takeBytes(qsizetype max);
    /// A text of at most `max` UTF-16 units: bytes as Latin-1, as UTF-8, or as the units
    /// themselves, whichever the byte in front says, and the same again and again if it says so.
    QString takeText(qsizetype max);
    QByteArray takeRest();

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
};

} // namespace norvane
