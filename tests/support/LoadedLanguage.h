#pragma once

#include <QHash>
#include <QString>

namespace norvane {

/// Texts that GS gives while the object is in scope.
class LoadedLanguage
{
public:
    /// Made-up texts by number.
    explicit LoadedLanguage(const QHash<qint32, QString> &texts);
    /// The console's own file of the language `code`.
    explicit LoadedLanguage(const QString &code);
    ~LoadedLanguage();

    LoadedLanguage(const LoadedLanguage &) = delete;
    LoadedLanguage &operator=(const LoadedLanguage &) = delete;
};

} // namespace norvane
