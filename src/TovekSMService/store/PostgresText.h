#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

namespace norvane {

/// Statements and values in the form that PostgreSQL is given them in.
namespace PostgresText {

/// The statement with "$1", "$2" and so on in the places of its question marks, and with ILIKE for
/// LIKE, which tells capital letters apart there.
QByteArray withNumberedPlaces(const QByteArray &statement);

/// A value in text format. NUL, which no text of the server can hold, becomes a space.
QByteArray of(const QVariant &value);

/// An array's text format, to be cast to its type in the statement.
QString array(const QList<qint64> &values);
QString array(const QStringList &values);

/// Whether a connection string holds a password. One that can't be read may.
bool hasPassword(const QString &conninfo);

} // namespace PostgresText

} // namespace norvane
