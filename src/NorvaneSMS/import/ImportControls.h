#pragma once

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QWidget;

namespace norvane {

class CaptionedFrame;
class PictureButton;

/// The controls of the import dialog. Each bears its own name as objectName.
struct ImportControls
{
    /// Makes all controls in `form`, in their tab order.
    explicit ImportControls(QWidget *form);

    /// Empties a drop-down list, also of a text that was typed into it.
    static void clear(QComboBox *list);

    QComboBox *cboFileFormat;
    QLineEdit *txtFilePath;
    PictureButton *btnOpen;
    CaptionedFrame *fraExcel;
    QComboBox *cboSheet;
    QComboBox *cboField;
    QLineEdit *txtRecords;
    PictureButton *btnImport;
    QLabel *lblFileFormat;
    QLabel *lblFilePath;
    QLabel *lblRecords;
    QLabel *lblField;
    QLabel *lblSheet;
    QCheckBox *chkDeleteDuplicated;

private:
    void setUp();
    void layOut(QWidget *form);
    QGridLayout *sheetLayout();
};

} // namespace norvane
