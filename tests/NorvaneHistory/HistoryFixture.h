#pragma once

#include "NorvaneHistory/FakeSource.h"
#include "NorvaneHistory/HistoryWindow.h"
#include "support/LoadedLanguage.h"
#include "support/RecordingMessageBoxes.h"
#include "support/WaitUntil.h"

#include <QTableView>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

/// The window over an engine in memory, in Spanish, with message boxes that answer by themselves.
class HistoryFixture : public ::testing::Test
{
protected:
    explicit HistoryFixture(const QString &language = QStringLiteral("ESN"));

    /// Makes the window, shows it, and waits until it has its rows.
    void open();

    template <typename Control = QWidget>
    Control *control(const char *name) const
    {
        auto *const found = window->findChild<Control *>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    /// The control of that name below another one.
    template <typename Control = QWidget>
    static Control *controlOf(const QObject &parent, const char *name)
    {
        auto *const found = parent.findChild<Control *>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    QTableView *messages() const { return control<QTableView>("grdMessages"); }
    QTableView *inbox() const { return control<QTableView>("grdInbox"); }
    /// A list's tab.
    QWidget *tabOf(QTableView *list) const;
    void showTab(int index);
    static QString cell(const QTableView &view, int row, int column);
    QStringList phones() const;
    /// Chooses a row as an operator does.
    void choose(QTableView *view, int row);
    bool hasPhones(const QStringList &expected);

    LoadedLanguage language;
    RecordingMessageBoxes boxes;
    FakeSource source;
    QString pickedFile;
    QString printedFile; ///< a PDF in the printer's place
    std::unique_ptr<HistoryWindow> window;
};

} // namespace norvane
