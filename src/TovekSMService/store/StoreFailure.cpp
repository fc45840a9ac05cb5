#include "TovekSMService/store/StoreFailure.h"

namespace norvane {

namespace {

/// The primary result codes of the database library.
StoreFailure::Kind kindOf(const QSqlError &error)
{
    switch (error.nativeErrorCode().toInt() & 0xFF) {
    case 5: // SQLITE_BUSY
    case 6: // SQLITE_LOCKED
        return StoreFailure::Kind::Busy;
    case 13: // SQLITE_FULL
        return StoreFailure::Kind::Full;
    case 8:  // SQLITE_READONLY
    case 14: // SQLITE_CANTOPEN
        return StoreFailure::Kind::ReadOnly;
    case 11: // SQLITE_CORRUPT
    case 26: // SQLITE_NOTADB
        return StoreFailure::Kind::Corrupt;
    default:
        return StoreFailure::Kind::Other;
    }
}

} // namespace

StoreFailure::StoreFailure(const QSqlError &error) : StoreFailure(kindOf(error), error.text()) {}

} // namespace norvane
