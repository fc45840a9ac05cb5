#pragma once

#include "NorvaneSMS/device/FolderBrowser.h"

namespace norvane {

/// The toolkit's dialog: folders alone, with a box in which a path can be typed.
class WidgetFolderBrowser : public FolderBrowser
{
public:
    Choice browse(QWidget *owner, const QString &title, const QString &preselected,
                  Style style) override;
};

} // namespace norvane
