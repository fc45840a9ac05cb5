#include "NorvaneSMS/look/WindowsFixture.h"

#include "foundation/Globals.h"

#include <QAccessible>
#include <QLabel>
#include <QTableView>

#include <ostream>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A control as a screen reader meets it. Its name is a text of the language file, or a fixed one.
struct Told
{
    const char *control;
    QAccessible::Role role;
    qint32 nameId = 0;
    QString fixedName = {};
    QString behind = {};
};

using Role = QAccessible::Role;

const QList<Told> &consoleControls()
{
    static const QList<Told> controls = {
        {"btnDeviceConfig", Role::Button, 3760001},
        {"btnTestDevice", Role::Button, 3760002},
        {"imgLogo(1)", Role::Graphic, 3760000},
        {"fraSMSMessage", Role::Grouping, 3760005},
        {"txtMessage", Role::EditableText, 3760105},
        {"lblSMSChars", Role::StaticText, 0, u"Caracteres: 0 / 160"_s},
        {"lblPhone", Role::StaticText, 3760006},
        {"txtPhone", Role::EditableText, 3760006},
        {"lblDeliveryDate", Role::StaticText, 3760007},
        {"dtDeliveryDate", Role::SpinBox, 3760106},
        {"tmDeliveryDate", Role::SpinBox, 3760107},
        {"btnSend", Role::Button, 3760003},
        {"btnImport", Role::Button, 3760004},
        {"fraEngineStatus", Role::Grouping, 0, u"Estado"_s},
        {"imgEngineStatus(1)", Role::Graphic, 3760014},
        {"lblEngineStatus", Role::StaticText, 3760014},
        {"fraQueueStatus", Role::Grouping, 3760011},
        {"imgQueue(0)", Role::Graphic, 3760013},
        {"lblQueueSize", Role::StaticText, 3760013},
        {"lblEstimated", Role::StaticText, 0, u"Tempo previsto: 00:00:00"_s},
        {"fraDeviceStatus", Role::Grouping, 3760012},
        {"imgQueue(2)", Role::Graphic, 3760015},
        {"lblDeviceInfo", Role::StaticText, 3760015},
        {"lblDeviceStatus", Role::StaticText, 3760019},
        {"fraCommunication", Role::Grouping, 3760090},
        {"txtTerm", Role::EditableText, 3760090},
        {"fraQueueDetails", Role::Grouping, 3760008},
        {"grdQueue", Role::Table, 3760008},
        {"btnStart", Role::Button, 3760100},
        {"btnStop", Role::Button, 3760101},
        {"btnClearQueue", Role::Button, 3760102},
        {"fraSentDetails", Role::Grouping, 3760009},
        {"grdSentDetails", Role::Table, 3760009},
    };
    return controls;
}

const QList<Told> &deviceControls()
{
    static const QList<Told> controls = {
        {"fraOperationMode", Role::Grouping, 0, u"Modo de funcionamento"_s},
        {"opServer", Role::RadioButton, 0, u"Servidor"_s},
        {"opClient", Role::RadioButton, 0, u"Cliente"_s},
        {"imgDevice", Role::Graphic, 3760015},
        {"txtQueueFolder", Role::EditableText, 0, u"Pasta envio:"_s},
        {"Label1", Role::StaticText, 0, u"Pasta envio:"_s},
        {"btnOpen", Role::Button, 3760103},
        {"cboDeviceType", Role::ComboBox, 3760036},
        {"lblDeviceType", Role::StaticText, 3760036},
        {"cboConnectionMode", Role::ComboBox, 3760037},
        {"lblMode", Role::StaticText, 3760037},
        {"cboProtocol", Role::ComboBox, 3760038},
        {"lblProtocol", Role::StaticText, 3760038},
        {"txtParameter", Role::EditableText, 3760039},
        {"lblParameter", Role::StaticText, 3760039},
        {"txtPINCode", Role::EditableText, 3760040},
        {"lblPINCode", Role::StaticText, 3760040},
        {"cmdOk", Role::Button, 14},
        {"cmdCancel", Role::Button, 16},
    };
    return controls;
}

const QList<Told> &importControls()
{
    static const QList<Told> controls = {
        {"cboFileFormat", Role::ComboBox, 3760043},
        {"lblFileFormat", Role::StaticText, 3760043},
        {"txtFilePath", Role::EditableText, 3760044},
        {"lblFilePath", Role::StaticText, 3760044},
        {"btnOpen", Role::Button, 3760104},
        {"fraExcel", Role::Grouping, 3760056},
        {"cboSheet", Role::ComboBox, 3760046},
        {"lblSheet", Role::StaticText, 3760046},
        {"cboField", Role::ComboBox, 3760047},
        {"lblField", Role::StaticText, 3760047},
        {"txtRecords", Role::EditableText, 3760048},
        {"lblRecords", Role::StaticText, 3760048},
        {"btnImport", Role::Button, 3760049},
        {"chkDeleteDuplicated", Role::CheckBox, 3760045},
    };
    return controls;
}

/// As the tests compare and print them, in one order.
QString line(const QString &control, QAccessible::Role role, const QString &name)
{
    return control + u' ' + QString::number(role) + u' ' + name;
}

QStringList expected(const QList<Told> &controls)
{
    QStringList lines;
    for (const Told &told : controls) {
        const QString name =
            told.nameId ? GS(told.nameId).remove(u'&') + told.behind : told.fixedName;
        lines.append(line(QLatin1String(told.control), told.role, name));
    }
    lines.sort();
    return lines;
}

bool isPanel(const QObject &object)
{
    return object.objectName().startsWith(u"pic");
}

/// What a screen reader calls `control`. A list bears its entry as its name and is called by its
/// label.
QString nameOf(const QAccessibleInterface &control)
{
    if (control.role() != QAccessible::ComboBox)
        return control.text(QAccessible::Name);
    const auto labels = control.relations(QAccessible::Label);
    return labels.isEmpty() ? QString() : labels.first().first->text(QAccessible::Name);
}

/// What a screen reader finds below `parent`: every control that isn't hidden. The parts of a
/// control are its own business.
void collect(QAccessibleInterface &parent, QStringList &lines)
{
    for (int i = 0; i < parent.childCount(); ++i) {
        QAccessibleInterface *const child = parent.child(i);
        ASSERT_NE(child, nullptr);
        const auto *const widget = qobject_cast<QWidget *>(child->object());
        if (!widget || widget->isHidden())
            continue;
        if (!isPanel(*widget))
            lines.append(line(widget->objectName(), child->role(), nameOf(*child)));
        if (isPanel(*widget) || child->role() == QAccessible::Grouping)
            collect(*child, lines);
    }
}

QStringList found(QWidget &window)
{
    QStringList lines;
    collect(*QAccessible::queryAccessibleInterface(&window), lines);
    lines.sort();
    return lines;
}

class AccessibleTree : public WindowsFixture, public ::testing::WithParamInterface<const char *>
{
protected:
    AccessibleTree() { speak(QLatin1String(GetParam())); }

    void SetUp() override
    {
        script.status = 1;
        loadAsServer();
        control<QLabel>("lblDeviceStatus")->setText(GS(3760019));
        show();
    }
};

INSTANTIATE_TEST_SUITE_P(Each, AccessibleTree, ::testing::Values("ESN", "CAT", "PTG"),
                         [](const auto &language) { return std::string(language.param); });

TEST_P(AccessibleTree, everyControlOfTheConsoleHasItsRoleAndName)
{
    EXPECT_EQ(found(*console), expected(consoleControls()));
    const auto *const window = QAccessible::queryAccessibleInterface(console.get());
    EXPECT_EQ(window->role(), QAccessible::Window);
    EXPECT_EQ(window->text(QAccessible::Name), GS(3760000));
}

TEST_P(AccessibleTree, everyControlOfTheDeviceDialogHasItsRoleAndName)
{
    inDeviceDialog([](QWidget &dialog) {
        EXPECT_EQ(found(dialog), expected(deviceControls()));
        EXPECT_EQ(QAccessible::queryAccessibleInterface(&dialog)->role(), QAccessible::Dialog);
    });
}

TEST_P(AccessibleTree, everyControlOfTheImportDialogHasItsRoleAndName)
{
    inImportDialog([](QWidget &dialog) {
        EXPECT_EQ(found(dialog), expected(importControls()));
        EXPECT_EQ(QAccessible::queryAccessibleInterface(&dialog)->role(), QAccessible::Dialog);
    });
}

TEST_P(AccessibleTree, noNameIsEmptyOrBearsTheSignOfAMnemonic)
{
    inEveryWindow([](QWidget &window) {
        for (const QString &told : found(window)) {
            // The one label that has nothing to say until a device is known.
            EXPECT_EQ(told.endsWith(u' '), told.startsWith(u"lblDeviceStatus")) << qPrintable(told);
            EXPECT_FALSE(told.contains(u'&')) << qPrintable(told);
        }
    });
}

TEST_P(AccessibleTree, picturesThatAreHiddenHaveTheirNamesToo)
{
    const std::initializer_list<std::pair<const char *, qint32>> hidden = {
        {"imgLogo(0)", 3760000}, {"imgEngineStatus(0)", 3760026}, {"imgQueue(1)", 3760108}};
    for (const auto &[name, id] : hidden) {
        EXPECT_TRUE(control(name)->isHidden()) << name;
        EXPECT_EQ(control(name)->accessibleName(), GS(id)) << name;
    }
}

TEST_P(AccessibleTree, buttonsWithoutACaptionShowTheirNamesAsTips)
{
    for (const char *const name : {"btnStart", "btnStop", "btnClearQueue"})
        EXPECT_EQ(control(name)->toolTip(), control(name)->accessibleName()) << name;
    const auto opener = [](QWidget &dialog) {
        const auto *const button = dialog.findChild<QWidget *>(u"btnOpen"_s);
        EXPECT_EQ(button->toolTip(), button->accessibleName());
        EXPECT_FALSE(button->toolTip().isEmpty());
    };
    inDeviceDialog(opener);
    inImportDialog(opener);
}

TEST_P(AccessibleTree, rowThatFailedIsToldSoAndNotByItsColourAlone)
{
    Q_EMIT engine()->SMSSent(u"1"_s, u"a"_s, 0);
    Q_EMIT engine()->SMSSentFailed(u"2"_s, u"b"_s, -1);
    auto *const grid = QAccessible::queryAccessibleInterface(control("grdSentDetails"));
    QAccessibleTableInterface *const table = grid->tableInterface();
    ASSERT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->columnDescription(1), GS(3760029));
    EXPECT_EQ(table->cellAt(1, 1)->text(QAccessible::Name), u"2"_s);
    EXPECT_EQ(table->cellAt(1, 1)->text(QAccessible::Description), GS(3760109));
    EXPECT_EQ(table->cellAt(0, 1)->text(QAccessible::Description), QString());
}

} // namespace

} // namespace norvane
