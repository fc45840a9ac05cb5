#pragma once

#include "gsm-simulator/ModemState.h"

#include <QByteArray>

namespace norvane {

namespace simulator {

/// What a card answers: its status word (ETSI TS 102 221, 10.2) and, where it has some, data.
struct CardAnswer
{
    int status = 0;
    QByteArray data;
};

/// READ BINARY of an elementary file.
/// @param file    its identifier
/// @param length  octets to read; 0 for all there are
CardAnswer readCardFile(const ModemState &modem, int file, int offset, int length);

/// A command to the card as it goes over its contacts. It knows the two that tell how many tries
/// its codes have left: VERIFY PIN and UNBLOCK PIN without data.
CardAnswer runCardCommand(const ModemState &modem, const QByteArray &command);

} // namespace simulator

} // namespace norvane
