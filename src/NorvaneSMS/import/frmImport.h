#pragma once

#include "NorvaneSMS/import/ImportControls.h"
#include "NorvaneSMS/import/ImportEnvironment.h"
#include "NorvaneSMS/import/readers/RecipientReaders.h"
#include "foundation/FileSystem.h"
#include "foundation/clsCollection.h"

#include <QDialog>

#include <memory>

namespace norvane {

/// The modal dialog in which the operator points at a file of recipients. It reads the file once,
/// when `btnImport` is pressed, and stays loaded, hidden, so that its result can be fetched.
class frmImport : public QDialog
{
    Q_OBJECT

public:
    explicit frmImport(ImportEnvironment environment, QWidget *owner = nullptr);
    ~frmImport() override;

    /// Brings the dialog up. To be called once, before it is shown.
    /// @throws NumberedFailure if no language file is loaded
    void Form_Load();

    /// Shows the dialog until it is confirmed or closed.
    /// @return whether it was confirmed; even then nothing may have been read
    bool ShowImport();

    /// What was read: a text for each recipient, in the file's order.
    const clsCollection &ImportData() const { return *m_importData; }

    /// Escape is the close box. Return presses no button but the one that has the focus: a list
    /// that was imported is queued without another question.
    void reject() override { close(); }

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum Format : qint16 { TextFile = 0, Spreadsheet = 1 };

    void connectControls();
    void LocalizeForm();
    void FillFormats();
    void Form_Unload();

    void cboFileFormat_Click(int index);
    void btnOpen_Click();
    void txtFilePath_LostFocus();
    void cboSheet_Click();
    void btnImport_Click();

    void ReadFile();
    void ReadTextFile(Duplicates duplicates);
    void ReadSpreadsheet(Duplicates duplicates);
    void OpenWorkbook();
    void openConnection();
    void listSheets();
    void listFields();
    /// @throws NumberedFailure 91 while there is no connection
    SpreadsheetConnection &connection();
    void showOpenFailure(const NumberedFailure &failure);

    ImportEnvironment m_environment;
    ImportControls m_ui;

    std::unique_ptr<FileSystem> moFileSystem;
    std::unique_ptr<clsCollection> m_importData;
    std::unique_ptr<SpreadsheetConnection> moConnection;
    qint16 mnFileFormat = TextFile;
    bool mbCancelled = false;
    bool m_opening = false; ///< a workbook: what is pressed then has no effect
};

} // namespace norvane
