#include "TovekSMService/history/SearchedText.h"

#include "TovekSMService/history/TextFold.h"

namespace norvane {

SearchedText::SearchedText(const QString &text) : m_folded(TextFold::fold(text)) {}

bool SearchedText::isIn(const QString &phone, const QString &text) const
{
    if (m_folded.isEmpty())
        return true;
    const QString foldedPhone = TextFold::fold(phone);
    return foldedPhone.contains(m_folded) || TextFold::fold(text).contains(m_folded) ||
           TextFold::dialled(foldedPhone).contains(m_folded);
}

QString SearchedText::folded(const QString &phone, const QString &text)
{
    const QString foldedPhone = TextFold::fold(phone);
    const QString dialled = TextFold::dialled(foldedPhone);
    QString folded = foldedPhone + u'\n';
    if (dialled != foldedPhone)
        folded += dialled + u'\n';
    return folded + TextFold::fold(text);
}

} // namespace norvane
