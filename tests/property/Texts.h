#pragma once

#include <QList>
#include <QRandomGenerator>
#include <QString>

namespace norvane {

/// A text with a name for messages.
struct NamedText
{
    const char *name;
    QString text;
};

/// Texts that are hard to cut or to encode, none of them longer than a part.
QList<NamedText> pieces();

/// A text of up to `max` UTF-16 units, of one of several kinds: ordinary letters, letters with an
/// escape, any UTF-16 units with halves of pairs among them, characters beyond the first plane,
/// control characters, and the hard pieces one after the other.
QString randomText(QRandomGenerator &random, int max);

/// The text as it can arrive: a half of a pair becomes U+FFFD.
QString arriving(const QString &text);

} // namespace norvane
