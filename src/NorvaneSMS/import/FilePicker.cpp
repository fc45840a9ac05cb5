#include "NorvaneSMS/import/FilePicker.h"

#include <QFileDialog>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The toolkit's dialog, without the files that the toolkit has in itself.
class FileDialog : public QFileDialog
{
public:
    using QFileDialog::QFileDialog;

    void accept() override
    {
        if (selectedFiles().value(0).startsWith(u'/'))
            QFileDialog::accept();
    }
};

class ToolkitFilePicker : public FilePicker
{
public:
    Outcome pick(const Request &request) override
    {
        FileDialog dialog(request.owner, request.title, request.initialFolder);
        dialog.setAcceptMode(request.purpose == Purpose::Open ? QFileDialog::AcceptOpen
                                                              : QFileDialog::AcceptSave);
        dialog.setFileMode((request.flags & FileMustExist) != 0 ? QFileDialog::ExistingFile
                                                                : QFileDialog::AnyFile);
        dialog.setNameFilters(toolkitFilters(request.filter));
        dialog.setDefaultSuffix(request.defaultExtension.toLower());
        if (!request.path.isEmpty())
            dialog.selectFile(request.path);
        if (dialog.exec() != QDialog::Accepted)
            return {};
        const QString path = dialog.selectedFiles().value(0);
        if (path.size() >= bufferLength)
            return {false, {}, bufferTooSmall};
        return {true, path, 0};
    }
};

} // namespace

FilePicker &toolkitFilePicker()
{
    static ToolkitFilePicker picker;
    return picker;
}

QStringList toolkitFilters(const QString &filter)
{
    const QStringList parts = filter.split(u'|', Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString label = parts.at(i).left(parts.at(i).indexOf(u'('));
        QString patterns = parts.at(i + 1);
        filters.append(label + u" ("_s + patterns.replace(u';', u' ') + u')');
    }
    return filters;
}

} // namespace norvane
