#pragma once

#include "NorvaneSMS/import/frmImport.h"

#include "NorvaneSMS/import/ScriptedImport.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "support/LoadedLanguage.h"
#include "support/PressWays.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedStreams.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

/// The dialog over made-up spreadsheets.
class ImportDialog : public ::testing::Test
{
protected:
    ImportDialog()
    {
        script.sheets = {{u"Uno"_s, {u"Num"_s, u"Otro"_s}, {{u"1"_s, u"10"_s}, {u"2"_s, {}}}},
                         {u"Dos"_s, {u"Tel"_s}, {{u"3"_s}}},
                         {u"Vacio"_s, {}, {}}};
        environment.picker = &picker;
        environment.programFolder = u"/program"_s;
        environment.files = std::make_shared<NumberedFiles>(streams);
        environment.createConnection = [this] {
            return std::make_unique<ScriptedConnection>(script);
        };
        load();
    }

    void load(QWidget *owner = nullptr)
    {
        dialog.reset();
        dialog = std::make_unique<frmImport>(environment, owner);
        dialog->Form_Load();
    }
    template <typename Control>
    Control *control(const char *name) const
    {
        return dialog->findChild<Control *>(QLatin1String(name));
    }
    /// Shows the dialog and runs `steps` on it. A dialog that is open then is closed.
    bool showAnd(const std::function<void()> &steps)
    {
        QTimer::singleShot(0, dialog.get(), [&] {
            QApplication::setActiveWindow(dialog.get());
            steps();
            stayedOpen = dialog->isVisible();
            if (stayedOpen)
                dialog->close();
        });
        return dialog->ShowImport();
    }
    void choose(const char *name, const QString &entry) const
    {
        auto *const box = control<QComboBox>(name);
        box->setFocus();
        const int index = box->findText(entry);
        ASSERT_GE(index, 0);
        box->setCurrentIndex(index);
        Q_EMIT box->activated(index);
    }
    void chooseSpreadsheet() const { choose("cboFileFormat", GS(3760056)); }
    void type(const QString &path) const
    {
        control<QLineEdit>("txtFilePath")->setFocus();
        control<QLineEdit>("txtFilePath")->setText(path);
    }
    void click(const char *button) const
    {
        QTest::mouseClick(control<QPushButton>(button), Qt::LeftButton);
    }
    QString text(const char *name) const { return control<QLineEdit>(name)->text(); }
    QStringList entries(const char *name) const
    {
        QStringList found;
        for (int i = 0; i < control<QComboBox>(name)->count(); ++i)
            found.append(control<QComboBox>(name)->itemText(i));
        return found;
    }
    QString write(const QByteArray &bytes, const QString &name = u"list.txt"_s) const
    {
        writeFile(folder.filePath(name), bytes);
        return folder.filePath(name);
    }
    QStringList imported() const
    {
        QStringList items;
        for (const QVariant &item : dialog->ImportData())
            items.append(item.toString());
        return items;
    }
    static RecordingMessageBoxes::Shown box(const QString &text)
    {
        return {text, MessageBoxes::Icon::None, MessageBoxes::Buttons::Ok, u"Norvane SMS"_s};
    }
    using Boxes = QList<RecordingMessageBoxes::Shown>;

    const LoadedLanguage language{u"ESN"_s};
    const QTemporaryDir folder;
    RecordingMessageBoxes boxes;
    ScriptedStreams streams;
    SheetScript script;
    ScriptedPicker picker;
    ImportEnvironment environment;
    std::unique_ptr<frmImport> dialog;
    bool stayedOpen = false;
};

} // namespace norvane
