#include "NorvaneSMS/import/frmImport.h"

#include "NorvaneSMS/import/CommonDialog.h"
#include "common/FailureNumbers.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/PlatformHelpers.h"
#include "foundation/TextId.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/WaitPointer.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void showBox(const QString &text)
{
    messageBoxes().show(text, MessageBoxes::Icon::None, MessageBoxes::Buttons::Ok, boxTitle());
}

/// The box of the failure that is being handled.
void showReadingFailure()
{
    const NumberedFailure failure = Failure::fromException(std::current_exception());
    showBox(QString::number(failure.number()) + u" - "_s + failure.description());
}

/// True if the focus moved to another control of the program, and not to a menu or to another
/// program.
bool isLeaving(Qt::FocusReason reason)
{
    return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason &&
           reason != Qt::MenuBarFocusReason;
}

} // namespace

frmImport::frmImport(ImportEnvironment environment, QWidget *owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_environment(std::move(environment)), m_ui(this)
{
    setObjectName(u"frmImport"_s);
    connectControls();
}

frmImport::~frmImport()
{
    Form_Unload();
}

void frmImport::connectControls()
{
    using FatalReport::guarded;
    connect(m_ui.cboFileFormat, &QComboBox::activated, this,
            guarded(this, &frmImport::cboFileFormat_Click));
    connect(m_ui.btnOpen, &QPushButton::clicked, this, guarded(this, &frmImport::btnOpen_Click));
    connect(m_ui.cboSheet, &QComboBox::activated, this, guarded(this, &frmImport::cboSheet_Click));
    connect(m_ui.btnImport, &QPushButton::clicked, this,
            guarded(this, &frmImport::btnImport_Click));
    m_ui.txtFilePath->installEventFilter(this);
}

void frmImport::Form_Load()
{
    moFileSystem = std::make_unique<FileSystem>();
    m_importData = std::make_unique<clsCollection>();
    LocalizeForm();
    FillFormats();
    adjustSize();
    CenterForm(this);
}

void frmImport::LocalizeForm()
{
    setWindowTitle(GS(TextId::ImportDialogTitle));
    m_ui.lblFileFormat->setText(GS(TextId::FileFormatLabel));
    m_ui.lblFilePath->setText(GS(TextId::FilePathLabel));
    m_ui.chkDeleteDuplicated->setText(GS(TextId::DeleteDuplicatesBox));
    m_ui.lblSheet->setText(GS(TextId::SheetLabel));
    m_ui.lblField->setText(GS(TextId::FieldLabel));
    m_ui.lblRecords->setText(GS(TextId::RecordsLabel));
    m_ui.btnImport->setText(GS(TextId::ImportNumbersButton));
    m_ui.fraExcel->setAccessibleName(GS(TextId::SpreadsheetFormat));
    m_ui.btnOpen->setAccessibleName(GS(TextId::ChooseFileTip));
    m_ui.btnOpen->setToolTip(GS(TextId::ChooseFileTip));
}

void frmImport::FillFormats()
{
    ImportControls::clear(m_ui.cboFileFormat);
    m_ui.cboFileFormat->addItems({GS(TextId::TextFileFormat), GS(TextId::SpreadsheetFormat)});
    m_ui.cboFileFormat->setCurrentIndex(TextFile);
    cboFileFormat_Click(TextFile);
}

void frmImport::Form_Unload()
{
    moFileSystem.reset();
    m_importData.reset();
    if (moConnection)
        moConnection->close();
    moConnection.reset();
}

bool frmImport::ShowImport()
{
    exec();
    return !mbCancelled;
}

void frmImport::closeEvent(QCloseEvent *event)
{
    mbCancelled = true;
    event->accept();
    hide();
}

bool frmImport::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui.txtFilePath && event->type() == QEvent::FocusOut && isVisible() &&
        isLeaving(static_cast<QFocusEvent *>(event)->reason()))
        FatalReport::guarded(this, &frmImport::txtFilePath_LostFocus)();
    return QDialog::eventFilter(watched, event);
}

void frmImport::cboFileFormat_Click(int index)
{
    mnFileFormat = static_cast<qint16>(index);
    m_ui.fraExcel->setVisible(mnFileFormat == Spreadsheet);
}

void frmImport::btnOpen_Click()
{
    if (m_opening)
        return;
    const bool isText = mnFileFormat == TextFile;
    quint32 flags = FilePicker::PathMustExist | FilePicker::FileMustExist;
    QString path;
    QString fileTitle;
    QString filter = isText ? u"Texto(*.txt)|*.txt"_s : u"Excel(*.xls)|*.xls"_s;
    if (!CD_ShowOpen_Save(*m_environment.picker, this, flags, path, fileTitle,
                          isText ? u"TXT"_s : u"XLS"_s, windowTitle(), filter,
                          m_environment.programFolder, FilePicker::Purpose::Open))
        return;
    m_ui.txtFilePath->setText(path);
    if (mnFileFormat == Spreadsheet)
        OpenWorkbook();
}

void frmImport::txtFilePath_LostFocus()
{
    if (m_opening)
        return;
    if (!moFileSystem->FileExists(m_ui.txtFilePath->text())) {
        m_ui.txtFilePath->clear();
        ImportControls::clear(m_ui.cboSheet);
        ImportControls::clear(m_ui.cboField);
    } else if (mnFileFormat == Spreadsheet) {
        OpenWorkbook();
    }
}

void frmImport::btnImport_Click()
{
    if (m_opening || !moFileSystem->FileExists(m_ui.txtFilePath->text()))
        return;
    ReadFile();
    mbCancelled = false;
    hide();
}

void frmImport::ReadFile()
{
    const Duplicates duplicates =
        m_ui.chkDeleteDuplicated->isChecked() ? Duplicates::Remove : Duplicates::Keep;
    m_importData->removeAll();
    if (mnFileFormat == TextFile)
        ReadTextFile(duplicates);
    else if (mnFileFormat == Spreadsheet)
        ReadSpreadsheet(duplicates);
}

void frmImport::ReadTextFile(Duplicates duplicates)
{
    try {
        readTextRecipients(*m_environment.files, m_ui.txtFilePath->text(), duplicates,
                           *m_importData);
    } catch (...) {
        showReadingFailure();
    }
}

void frmImport::ReadSpreadsheet(Duplicates duplicates)
{
    try {
        readSheetRecipients(connection(), m_ui.cboSheet->currentText(),
                            m_ui.cboField->currentText(), duplicates, *m_importData);
    } catch (...) {
        showReadingFailure();
    }
}

void frmImport::OpenWorkbook()
{
    try {
        openConnection();
        listSheets();
    } catch (...) {
        showOpenFailure(Failure::fromException(std::current_exception()));
    }
}

/// The wait pointer is shown while the file is opened. Reading it, which comes later, shows none.
void frmImport::openConnection()
{
    const WaitPointer busy;
    const QScopedValueRollback opening(m_opening, true);
    moConnection = m_environment.createConnection();
    moConnection->open(withoutBlanks(m_ui.txtFilePath->text()));
}

void frmImport::listSheets()
{
    const QStringList sheets = moConnection->sheets();
    ImportControls::clear(m_ui.cboSheet);
    ImportControls::clear(m_ui.cboField);
    m_ui.cboSheet->addItems(sheets);
    if (sheets.isEmpty())
        return;
    m_ui.cboSheet->setCurrentIndex(0);
    cboSheet_Click();
}

void frmImport::cboSheet_Click()
{
    if (m_opening)
        return;
    try {
        listFields();
    } catch (...) {
        showReadingFailure();
    }
}

void frmImport::listFields()
{
    const SpreadsheetConnection::Table table = connection().describe(m_ui.cboSheet->currentText());
    // There is no last record to move to.
    if (table.rows == 0)
        SheetFailure::raiseNoCurrentRecord();
    m_ui.txtRecords->setText(QString::number(table.rows));
    ImportControls::clear(m_ui.cboField);
    m_ui.cboField->addItems(table.fields);
    if (!table.fields.isEmpty())
        m_ui.cboField->setCurrentIndex(0);
}

SpreadsheetConnection &frmImport::connection()
{
    if (!moConnection)
        Failure::raise(Failure::ObjectNotSet, u"frmImport"_s);
    return *moConnection;
}

void frmImport::showOpenFailure(const NumberedFailure &failure)
{
    if (failure.number() > 0) {
        showBox(QString::number(failure.number()) + u'-' + failure.description());
        return;
    }
    for (const QString &error : moConnection->errors())
        showBox(error);
}

} // namespace norvane
