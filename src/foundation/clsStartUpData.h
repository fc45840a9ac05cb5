#pragma once

#include <QString>

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

/// A fixed number of texts, indexed from 0. A write outside the bound is ignored, a read outside it
/// gives "0".
template <qint32 Entries>
class BoundedTexts
{
public:
    static constexpr qint32 bound = Entries;

    QString get(qint32 index) const { return holds(index) ? m_texts[at(index)] : u"0"_s; }
    void set(qint32 index, const QString &text)
    {
        if (holds(index))
            m_texts[at(index)] = text;
    }

private:
    static constexpr bool holds(qint32 index) { return index >= 0 && index < Entries; }
    static constexpr std::size_t at(qint32 index) { return static_cast<std::size_t>(index); }

    std::array<QString, static_cast<std::size_t>(Entries)> m_texts;
};

/// The snapshot of the user's environment, taken once at start-up.
class clsStartUpData
{
public:
    bool DebugMode = false;
    QString Country;
    QString CountryName;
    QString Language;
    QString LanguageName;
    QString DecimalSeparator;
    QString ThousandSeparator;
    QString ShortDateFormat;
    QString LongDateFormat;

    // Shared with the other programs of the suite; the console fills none of them.
    BoundedTexts<19> FileLayoutFolder;
    BoundedTexts<19> HeaderSaleTransactionTabOrder;
    BoundedTexts<20> HeaderBuyTransactionTabOrder;
    BoundedTexts<43> HeaderTechnicalAssistanceProcessTabOrder;
};

} // namespace norvane
