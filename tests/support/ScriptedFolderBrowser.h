#pragma once

#include "NorvaneSMS/device/FolderBrowser.h"

#include <QList>

#include <functional>

namespace norvane {

/// A folder dialog that is never seen: it keeps what it was asked and answers as told.
class ScriptedFolderBrowser : public FolderBrowser
{
public:
    struct Asked
    {
        QString title;
        QString preselected;
        Style style;

        bool operator==(const Asked &) const = default;
    };

    Choice browse(QWidget *, const QString &title, const QString &preselected, Style style) override
    {
        asked.append({title, preselected, style});
        if (failing)
            failing();
        return answer;
    }

    QList<Asked> asked;
    Choice answer;
    std::function<void()> failing; ///< throws
};

} // namespace norvane
