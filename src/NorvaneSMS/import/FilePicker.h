#pragma once

#include <QString>

class QWidget;

namespace norvane {

/// Shows the dialog in which the operator picks a file. A test replaces it.
class FilePicker
{
public:
    enum class Purpose { Open, Save };
    struct Request
    {
        QWidget *owner = nullptr;
        quint32 flags = 0;
        QString path; ///< the name that the dialog begins with
        QString defaultExtension;
        QString title;
        QString filter; ///< labels and patterns in turn, each behind a "|"
        QString initialFolder;
        Purpose purpose = Purpose::Open;
    };
    struct Outcome
    {
        bool confirmed = false;
        QString path;
        quint32 errorCode = 0; ///< why the dialog failed; 0 when it was confirmed or cancelled
    };

    FilePicker() = default;
    FilePicker(const FilePicker &) = delete;
    FilePicker &operator=(const FilePicker &) = delete;
    virtual ~FilePicker() = default;

    virtual Outcome pick(const Request &request) = 0;

    /// Bits of Request::flags.
    enum Flag : quint32 { PathMustExist = 0x800, FileMustExist = 0x1000 };
    /// Maximum length of a path that a picker gives, including the character that ends it.
    static constexpr qsizetype bufferLength = 260;
    static constexpr quint32 bufferTooSmall = 0x3003;
};

/// The toolkit's dialog.
FilePicker &toolkitFilePicker();

/// The labels and patterns of a filter as the toolkit's dialog takes them.
QStringList toolkitFilters(const QString &filter);

} // namespace norvane
