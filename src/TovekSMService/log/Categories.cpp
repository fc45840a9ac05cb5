#include "TovekSMService/log/Categories.h"

namespace norvane {

Q_LOGGING_CATEGORY(logAt, "engine.at", QtInfoMsg)
Q_LOGGING_CATEGORY(logDevice, "engine.device", QtInfoMsg)
Q_LOGGING_CATEGORY(logStore, "engine.store", QtInfoMsg)
Q_LOGGING_CATEGORY(logDispatch, "engine.dispatch", QtInfoMsg)
Q_LOGGING_CATEGORY(logBus, "engine.bus", QtInfoMsg)
Q_LOGGING_CATEGORY(logHost, "engine.host", QtInfoMsg)

} // namespace norvane
