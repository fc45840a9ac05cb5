#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"

namespace norvane {

/// The commands that set a device up when it is opened.
namespace DeviceSetUp {

/// How the device talks: no echo, words for results, numbers for errors. One that refuses is
/// understood all the same.
QList<AtDialogue::Question> dialogue(const ModemTimings &timings);

/// How messages are handed over. A device without PDU mode can't be used.
QList<AtDialogue::Question> messages(const ModemTimings &timings);

} // namespace DeviceSetUp

} // namespace norvane
