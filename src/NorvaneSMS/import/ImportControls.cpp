#include "NorvaneSMS/import/ImportControls.h"

#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/SvgPicture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int openPicture = 16;
constexpr int importPicture = 24;
constexpr int pathWidth = 400;
constexpr int openWidth = 30;

template <typename Control>
Control *made(QWidget *parent, const char *name)
{
    auto *const control = new Control(parent);
    control->setObjectName(QLatin1String(name));
    return control;
}

/// A drop-down list with an editable text. Only picking an entry is a choice: typed text is never
/// completed, and never selects an entry.
QComboBox *madeDropDown(QWidget *parent, const char *name)
{
    auto *const box = made<QComboBox>(parent, name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setCompleter(nullptr);
    QObject::disconnect(box->lineEdit(), &QLineEdit::returnPressed, box, nullptr);
    QObject::disconnect(box->lineEdit(), &QLineEdit::editingFinished, box, nullptr);
    return box;
}

void setPicture(PictureButton *button, const char *file, int pictureSize, QSize size)
{
    const QSize picture(pictureSize, pictureSize);
    button->setIcon(SvgPicture::icon(":/images/"_L1 + QLatin1String(file), picture));
    button->setIconSize(picture);
    button->setFixedSize(size);
    button->setAutoDefault(false);
}

} // namespace

ImportControls::ImportControls(QWidget *form)
    : cboFileFormat(madeDropDown(form, "cboFileFormat")),
      txtFilePath(made<QLineEdit>(form, "txtFilePath")),
      btnOpen(made<PictureButton>(form, "btnOpen")),
      fraExcel(made<CaptionedFrame>(form, "fraExcel")),
      cboSheet(madeDropDown(fraExcel, "cboSheet")), cboField(madeDropDown(fraExcel, "cboField")),
      txtRecords(made<QLineEdit>(fraExcel, "txtRecords")),
      btnImport(made<PictureButton>(form, "btnImport")),
      lblFileFormat(made<QLabel>(form, "lblFileFormat")),
      lblFilePath(made<QLabel>(form, "lblFilePath")),
      lblRecords(made<QLabel>(fraExcel, "lblRecords")),
      lblField(made<QLabel>(fraExcel, "lblField")), lblSheet(made<QLabel>(fraExcel, "lblSheet")),
      chkDeleteDuplicated(made<QCheckBox>(form, "chkDeleteDuplicated"))
{
    setUp();
    layOut(form);
    QWidget *const order[] = {cboFileFormat, txtFilePath, btnOpen,   cboSheet,
                              cboField,      txtRecords,  btnImport, chkDeleteDuplicated};
    for (std::size_t i = 1; i < std::size(order); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void ImportControls::clear(QComboBox *list)
{
    list->clear();
    list->clearEditText(); // stays where there was no entry to remove
}

void ImportControls::setUp()
{
    setPicture(btnOpen, "button-open-folder.svg", openPicture,
               {openWidth, txtFilePath->sizeHint().height()});
    setPicture(btnImport, "button-import.svg", importPicture, {88, 56});
    const std::initializer_list<std::pair<QLabel *, QWidget *>> labels = {
        {lblFileFormat, cboFileFormat},
        {lblFilePath, txtFilePath},
        {lblSheet, cboSheet},
        {lblField, cboField},
        {lblRecords, txtRecords}};
    for (const auto &[label, field] : labels)
        label->setBuddy(field);
    txtFilePath->setMinimumWidth(pathWidth);
    chkDeleteDuplicated->setChecked(true);
}

void ImportControls::layOut(QWidget *form)
{
    auto *const grid = new QGridLayout(form);
    // The dialog keeps its size, and the frame its place, whichever format is chosen.
    grid->setSizeConstraint(QLayout::SetFixedSize);
    QSizePolicy policy = fraExcel->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    fraExcel->setSizePolicy(policy);
    fraExcel->setLayout(sheetLayout());
    grid->addWidget(lblFileFormat, 0, 0);
    grid->addWidget(cboFileFormat, 0, 1, 1, 2);
    grid->addWidget(lblFilePath, 1, 0);
    grid->addWidget(txtFilePath, 1, 1);
    grid->addWidget(btnOpen, 1, 2);
    grid->addWidget(fraExcel, 2, 0, 1, 3);
    grid->addWidget(chkDeleteDuplicated, 3, 0, 1, 2, Qt::AlignLeft);
    grid->addWidget(btnImport, 3, 1, 1, 2, Qt::AlignRight);
    grid->setColumnStretch(1, 1);
}

QGridLayout *ImportControls::sheetLayout()
{
    constexpr int captionStrip = 16;
    auto *const grid = new QGridLayout;
    grid->setContentsMargins(captionStrip, captionStrip, captionStrip, captionStrip);
    grid->addWidget(lblSheet, 0, 0);
    grid->addWidget(cboSheet, 0, 1);
    grid->addWidget(lblField, 1, 0);
    grid->addWidget(cboField, 1, 1);
    grid->addWidget(lblRecords, 2, 0);
    grid->addWidget(txtRecords, 2, 1);
    grid->setColumnStretch(1, 1);
    return grid;
}

} // namespace norvane
