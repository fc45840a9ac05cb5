#pragma once

#include "NorvaneSMS/console/ConsoleFixture.h"

#include <functional>

namespace norvane {

/// Each of the program's windows, in any of the languages.
class WindowsFixture : public ConsoleFixture
{
protected:
    static void speak(const QString &language);

    /// Opens the device dialog and hands it to `look`.
    void inDeviceDialog(const std::function<void(QWidget &)> &look);
    /// Opens the import dialog, with the frame of the spreadsheets shown, and hands it to `look`.
    void inImportDialog(const std::function<void(QWidget &)> &look);
    /// Loads and shows the console as a server and hands it and each dialog in turn to `look`.
    void inEveryWindow(const std::function<void(QWidget &)> &look);

private:
    void inDialog(const char *button, const std::function<void(QWidget &)> &look);
};

} // namespace norvane
