#include "device/WidgetFolderBrowser.h"

#include <QFileDialog>

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
    const QList<QUrl> chosen = dialog.selectedUrls();
    if (chosen.isEmpty() || !chosen.constFirst().isLocalFile())
        return {true, std::nullopt};
    return {true, chosen.constFirst().toLocalFile()};
}
