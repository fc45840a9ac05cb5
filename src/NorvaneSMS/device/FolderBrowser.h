#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace norvane {

/// The dialog in which an operator chooses a folder.
class FolderBrowser
{
public:
    enum class Style {
        Plain, ///< the toolkit's own
        Newer, ///< the desktop's, where it has one
    };

    struct Choice
    {
        bool confirmed = false;
        std::optional<QString> path; ///< nothing for an item that has no place in the file system
    };

    FolderBrowser() = default;
    FolderBrowser(const FolderBrowser &) = delete;
    FolderBrowser &operator=(const FolderBrowser &) = delete;
    virtual ~FolderBrowser() = default;

    /// Shows the dialog, modal over `owner`, and waits for its end.
    /// @param preselected  the folder that is selected at first; empty for none
    virtual Choice browse(QWidget *owner, const QString &title, const QString &preselected,
                          Style style) = 0;
};

/// The dialog, and where it starts.
struct FolderBrowsing
{
    FolderBrowser *dialog = nullptr;
    std::function<QString()> GetDocumentsFolder;
};

} // namespace norvane
