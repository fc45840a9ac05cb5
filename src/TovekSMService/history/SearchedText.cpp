#include "TovekSMService/history/SearchedText.h"

#include "TovekSMService/history/TextFold.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Without the character that parts the pieces where the server makes them. A text that differs in
/// it alone is found as well, and compared.
QString withoutSeparators(QString folded)
{
    constexpr char16_t separator = 1;
    return folded.replace(separator, u' ');
}

} // namespace

SearchedText::SearchedText(const QString &text) : m_folded(TextFold::fold(text)) {}

bool SearchedText::isIn(const QString &phone, const QString &text) const
{
    if (m_folded.isEmpty())
        return true;
    const QString foldedPhone = TextFold::fold(phone);
    return foldedPhone.contains(m_folded) || TextFold::fold(text).contains(m_folded) ||
           TextFold::dialled(foldedPhone).contains(m_folded);
}

QString SearchedText::inIndex() const
{
    return withoutSeparators(m_folded);
}

QString SearchedText::index(const QString &phone, const QString &text)
{
    const QString foldedPhone = TextFold::fold(phone);
    const QString dialled = TextFold::dialled(foldedPhone);
    QString folded = foldedPhone + u'\n';
    if (dialled != foldedPhone)
        folded += dialled + u'\n';
    return withoutSeparators(folded + TextFold::fold(text) + u"\n\n"_s);
}

} // namespace norvane
