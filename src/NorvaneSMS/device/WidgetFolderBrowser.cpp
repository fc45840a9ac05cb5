#include "NorvaneSMS/device/WidgetFolderBrowser.h"

#include <QFileDialog>

namespace norvane {

FolderBrowser::Choice WidgetFolderBrowser::browse(QWidget *owner, const QString &title,
                                                  const QString &preselected, Style style)
{
    QFileDialog dialog(owner, title);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setOption(QFileDialog::DontUseNativeDialog, style == Style::Plain);
    if (!preselected.isEmpty())
        dialog.selectFile(preselected);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QString chosen = dialog.selectedUrls().value(0).toLocalFile();
    // The toolkit's own resources are folders to its dialog, but none of the file system's.
    if (!chosen.startsWith(u'/'))
        return {true, std::nullopt};
    return {true, chosen};
}

} // namespace norvane
