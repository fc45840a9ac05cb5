#pragma once

#include <QByteArrayView>

#include <algorithm>

namespace norvane {

/// Whether there is something, and it is hexadecimal digits alone.
inline bool isHexadecimal(QByteArrayView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    });
}

} // namespace norvane
