#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/ConsoleDesign.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/MessageEdit.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/SvgPicture.h"

#include <QFontMetricsF>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Name, container, left, top, width and height in pixels at 15 twips each, as drawn by hand from
/// the design's measures; rounding is to the nearest pixel edge.
struct Placed
{
    const char *name;
    const char *container;
    float left, top, width, height; // twips
};

const Placed fixedControls[] = {
    {"btnDeviceConfig", "picTopPanel", 150, 210, 1155, 840},
    {"btnTestDevice", "picTopPanel", 1605, 210, 1080, 840},
    {"fraSMSMessage", "picTopPanel", 150, 1215, 8325, 1980},
    {"imgLogo(1)", "picTopPanel", 6270, 210, 2190, 660},
    {"imgLogo(0)", "picTopPanel", 6300, 375, 1920, 675},
    {"txtMessage", "fraSMSMessage", 150, 255, 4470, 1365},
    {"lblSMSChars", "fraSMSMessage", 150, 1695, 1935, 180},
    {"lblPhone", "fraSMSMessage", 4740, 255, 1395, 255},
    {"txtPhone", "fraSMSMessage", 4740, 540, 1665, 315},
    {"lblDeliveryDate", "fraSMSMessage", 4740, 1005, 1800, 255},
    {"dtDeliveryDate", "fraSMSMessage", 4725, 1260, 1215, 330},
    {"tmDeliveryDate", "fraSMSMessage", 5985, 1260, 915, 330},
    {"btnSend", "fraSMSMessage", 7065, 255, 1065, 735},
    {"btnImport", "fraSMSMessage", 7065, 1080, 1065, 735},
    {"fraEngineStatus", "picBottomPanel", 150, 60, 1800, 1440},
    {"imgEngineStatus(0)", "fraEngineStatus", 540, 255, 720, 720},
    {"imgEngineStatus(1)", "fraEngineStatus", 540, 255, 720, 720},
    {"lblEngineStatus", "fraEngineStatus", 15, 1170, 1755, 240},
    {"fraQueueStatus", "picBottomPanel", 1920, 60, 3345, 1440},
    {"imgQueue(0)", "fraQueueStatus", 1335, 255, 720, 720},
    {"imgQueue(1)", "fraQueueStatus", 1335, 180, 720, 720},
    {"lblQueueSize", "fraQueueStatus", 15, 930, 3285, 240},
    {"lblEstimated", "fraQueueStatus", 15, 1170, 3285, 240},
    {"fraDeviceStatus", "picBottomPanel", 5235, 60, 3240, 1440},
    {"imgQueue(2)", "fraDeviceStatus", 825, 165, 720, 720},
    {"lblDeviceInfo", "fraDeviceStatus", 15, 930, 3195, 240},
    {"lblDeviceStatus", "fraDeviceStatus", 15, 1170, 3195, 240},
};

/// The controls that a resize moves, at the design size of the window.
const Placed movedControls[] = {
    {"picMiddlePanel", "frmSMSClient", 0, 3255, 8670, 2355},
    {"fraCommunication", "picMiddlePanel", 150, 0, 8325, 2355},
    {"txtTerm", "fraCommunication", 165, 300, 7965, 1755},
    {"picLateralPanel", "frmSMSClient", 8610, 0, 6405, 7275},
    {"fraSentDetails", "picLateralPanel", 15, 4360, 6255, 2775},
    {"fraQueueDetails", "picLateralPanel", 15, 135, 6255, 4075},
    {"grdQueue", "fraQueueDetails", 150, 300, 5955, 3075},
    {"grdSentDetails", "fraSentDetails", 150, 300, 5955, 2325},
    {"btnClearQueue", "fraQueueDetails", 5475, 3475, 630, 510},
    {"btnStop", "fraQueueDetails", 4845, 3475, 630, 510},
    {"btnStart", "fraQueueDetails", 4215, 3475, 630, 510},
    {"picTopPanel", "frmSMSClient", 0, 0, 15015, 3300},
    {"picBottomPanel", "frmSMSClient", 0, 5655, 15015, 1620},
};

QRect pixels(const Placed &placed)
{
    const auto edge = [](float twips) { return static_cast<int>(std::lround(twips / 15)); };
    return {QPoint(edge(placed.left), edge(placed.top)),
            QPoint(edge(placed.left + placed.width) - 1, edge(placed.top + placed.height) - 1)};
}

} // namespace

class Controls : public ConsoleFixture
{
protected:
    /// Whatever the limits and the screen say.
    void resizeTo(QSize inner)
    {
        console->setMinimumSize(0, 0);
        console->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        console->resize(inner);
        QCoreApplication::processEvents();
        ASSERT_EQ(console->size(), inner);
    }

    /// The controls that Tab goes through from `btnSend` on, until it is back there.
    QStringList tabbed()
    {
        show();
        QApplication::setActiveWindow(console.get());
        control("btnSend")->setFocus();
        QStringList visited;
        // The time box moves the focus between its own sections first.
        for (int i = 0; i < 40; ++i) {
            const QString name = QApplication::focusWidget()->objectName();
            if (i > 0 && name == visited.constFirst())
                return visited;
            if (visited.isEmpty() || visited.constLast() != name)
                visited.append(name);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        ADD_FAILURE() << "Tab doesn't come back";
        return visited;
    }

    const QStringList inTabOrder = {u"btnSend"_s,        u"btnImport"_s,       u"txtPhone"_s,
                                    u"txtMessage"_s,     u"btnDeviceConfig"_s, u"btnTestDevice"_s,
                                    u"txtTerm"_s,        u"btnClearQueue"_s,   u"grdQueue"_s,
                                    u"dtDeliveryDate"_s, u"tmDeliveryDate"_s,  u"grdSentDetails"_s};

    QString shownText(const char *name) const
    {
        const QWidget *const found = control(name);
        if (const auto *const frame = qobject_cast<const CaptionedFrame *>(found))
            return frame->caption();
        if (const auto *const label = qobject_cast<const QLabel *>(found))
            return label->text();
        return control<PictureButton>(name)->text();
    }

    void expectPlaces(std::span<const Placed> controls) const
    {
        for (const Placed &placed : controls) {
            const QWidget *const found = control(placed.name);
            EXPECT_EQ(found->geometry(), pixels(placed)) << placed.name;
            EXPECT_EQ(found->parentWidget()->objectName(), QLatin1String(placed.container))
                << placed.name;
        }
    }
};

TEST_F(Controls, everyControlStandsInItsContainerAtItsPlace)
{
    loadAsServer();
    show();
    expectPlaces(fixedControls);
}

TEST_F(Controls, theMovedControlsStandAtTheWorkedPlacesAtTheDesignSize)
{
    loadAsServer();
    show();
    resizeTo({1001, 485});
    expectPlaces(movedControls);
}

TEST_F(Controls, everyControlShowsItsDesignTextUntilTheWindowIsLoaded)
{
    make();
    EXPECT_EQ(console->windowTitle(), u"Tovek SMS Center"_s);
    const std::initializer_list<std::pair<const char *, const char *>> texts = {
        {"btnDeviceConfig", "Configurar"},
        {"btnTestDevice", "Testar dispositivo"},
        {"fraSMSMessage", "Mensagem a Enviar"},
        {"lblSMSChars", "Caracteres: 0 / 160"},
        {"lblPhone", "Numero rápido"},
        {"lblDeliveryDate", "Data e hora de envio"},
        {"btnSend", "Enviar"},
        {"btnImport", "Importar Nº"},
        {"fraCommunication", "Detalhe de Comunicações"},
        {"fraEngineStatus", "Estado"},
        {"lblEngineStatus", "Iniciado"},
        {"fraQueueStatus", "Lista de envio"},
        {"lblQueueSize", "Sem itens a enviar"},
        {"lblEstimated", "Tempo previsto: 00:00:00"},
        {"fraDeviceStatus", "Dispositivo"},
        {"lblDeviceInfo", "Dispositivo GSM"},
        {"lblDeviceStatus", ""},
        {"fraQueueDetails", "Conteúdo da lista de envio"},
        {"btnStart", ""},
        {"btnStop", ""},
        {"btnClearQueue", ""},
        {"fraSentDetails", "Mensagens enviadas ( 0 )"}};
    for (const auto &[name, text] : texts)
        EXPECT_EQ(shownText(name), QString::fromUtf8(text)) << name;
}

TEST_F(Controls, thereAreNoOthers)
{
    EXPECT_EQ(ConsoleDesign::controls().size(),
              std::size(fixedControls) + std::size(movedControls));
}

TEST_F(Controls, theThreeButtonsStandFlushAgainstEachOther)
{
    loadAsServer();
    show();
    resizeTo({1100, 600});
    const QRect start = control("btnStart")->geometry();
    const QRect stop = control("btnStop")->geometry();
    const QRect clear = control("btnClearQueue")->geometry();
    EXPECT_EQ(start.right() + 1, stop.left());
    EXPECT_EQ(stop.right() + 1, clear.left());
    EXPECT_EQ(clear.right(), control("grdQueue")->geometry().right());
}

TEST_F(Controls, theDockedPanelsFollowTheWindow)
{
    loadAsServer();
    show();
    resizeTo({1100, 620});
    EXPECT_EQ(control("picTopPanel")->geometry(), QRect(0, 0, 1100, 220));
    EXPECT_EQ(control("picBottomPanel")->geometry(), QRect(0, 620 - 108, 1100, 108));
}

TEST_F(Controls, theLateralPanelLiesInFrontOfTheDockedOnes)
{
    loadAsServer();
    const QObjectList children = console->children();
    const auto depth = [&](const char *name) { return children.indexOf(control(name)); };
    EXPECT_GT(depth("picLateralPanel"), depth("picTopPanel"));
    EXPECT_GT(depth("picLateralPanel"), depth("picBottomPanel"));
}

TEST_F(Controls, inClientModeTheLateralPanelLiesOutsideTheWindow)
{
    loadAsClient();
    show();
    EXPECT_GE(control("picLateralPanel")->geometry().left(), console->width());
}

TEST_F(Controls, tabGoesThroughTheControlsInTheOrderOfTheDesign)
{
    loadAsServer();
    Q_EMIT engine()->EngineStatus(0);
    EXPECT_EQ(tabbed(), inTabOrder + QStringList{u"btnStart"_s});
}

TEST_F(Controls, tabReachesTheStopButtonWhileTheEngineRunsAndBothUntilItsStatusIsKnown)
{
    loadAsServer();
    Q_EMIT engine()->EngineStatus(1);
    EXPECT_EQ(tabbed(), inTabOrder + QStringList{u"btnStop"_s});
    console->ApplyOperationMode();
    EXPECT_EQ(tabbed(), (inTabOrder + QStringList{u"btnStart"_s, u"btnStop"_s}));
}

TEST_F(Controls, textBoxesHaveTheirKindAndLimit)
{
    loadAsServer();
    EXPECT_EQ(MessageEdit::maxLength, 160);
    EXPECT_EQ(control<MessageEdit>("txtMessage")->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    const auto *const terminal = control<TerminalView>("txtTerm");
    EXPECT_EQ(terminal->palette().color(QPalette::Base),
              terminal->palette().color(QPalette::Button));
    EXPECT_EQ(terminal->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    EXPECT_EQ(control<QLabel>("lblSMSChars")->palette().color(QPalette::WindowText),
              QColor(0x66, 0x7E, 0xA2));
}

TEST_F(Controls, theLogIsWrittenInAFaceOfOneWidth)
{
    loadAsServer();
    const QFont face = control("txtTerm")->font();
    EXPECT_EQ(face.family(), u"Liberation Mono"_s) << "it has Courier's measures";
    EXPECT_EQ(face.styleHint(), QFont::Monospace);
    EXPECT_DOUBLE_EQ(face.pointSizeF(), 9.75);
    const QFontMetricsF drawn(face);
    EXPECT_DOUBLE_EQ(drawn.horizontalAdvance(u'i'), drawn.horizontalAdvance(u'W'));
    EXPECT_NE(face.family(), control("txtMessage")->font().family());
}

TEST_F(Controls, picturesHaveTheirSizesAndDisabledFormsTheirOwn)
{
    loadAsServer();
    for (const char *const name :
         {"btnDeviceConfig", "btnTestDevice", "btnSend", "btnStart", "btnStop", "btnClearQueue"})
        EXPECT_EQ(control<PictureButton>(name)->iconSize(), QSize(24, 24)) << name;
    EXPECT_EQ(control<PictureButton>("btnImport")->iconSize(), QSize(32, 32));
    const auto drawn = [this](const char *button, QIcon::Mode mode) {
        return control<PictureButton>(button)->icon().pixmap(QSize(24, 24), mode).toImage();
    };
    const auto file = [](const char *name) {
        return SvgPicture::pixmap(":/images/"_L1 + QLatin1String(name), {24, 24}, 1).toImage();
    };
    const std::initializer_list<std::pair<const char *, const char *>> disabled = {
        {"btnTestDevice", "button-test-disabled.svg"},
        {"btnStart", "button-start-disabled.svg"},
        {"btnStop", "button-stop-disabled.svg"}};
    for (const auto &[button, name] : disabled) {
        EXPECT_EQ(drawn(button, QIcon::Disabled), file(name)) << button;
        EXPECT_NE(drawn(button, QIcon::Normal), file(name)) << button;
    }
    EXPECT_FALSE(console->windowIcon().isNull());
}

TEST_F(Controls, imagesShowSomething)
{
    loadAsServer();
    for (const char *const name :
         {"imgLogo(0)", "imgLogo(1)", "imgEngineStatus(0)", "imgEngineStatus(1)", "imgQueue(0)",
          "imgQueue(1)", "imgQueue(2)"}) {
        QWidget *const image = control(name);
        QImage shown(image->size(), QImage::Format_ARGB32);
        shown.fill(Qt::transparent);
        image->render(&shown, {}, {}, QWidget::RenderFlags());
        QSet<QRgb> colours;
        for (int x = 0; x < shown.width(); ++x)
            for (int y = 0; y < shown.height(); ++y)
                colours.insert(shown.pixel(x, y));
        EXPECT_GT(colours.size(), 5) << name;
    }
}

TEST_F(Controls, statusLabelsAreCentredAndTheOthersAreNot)
{
    loadAsServer();
    for (const char *const name :
         {"lblEngineStatus", "lblQueueSize", "lblEstimated", "lblDeviceInfo", "lblDeviceStatus"})
        EXPECT_TRUE(control<QLabel>(name)->alignment().testFlag(Qt::AlignHCenter)) << name;
    for (const char *const name : {"lblPhone", "lblDeliveryDate", "lblSMSChars"})
        EXPECT_TRUE(control<QLabel>(name)->alignment().testFlag(Qt::AlignLeft)) << name;
}

TEST_F(Controls, theMessageBoxIsWhiteWhateverTheDesktopSays)
{
    loadAsServer();
    EXPECT_EQ(control("txtMessage")->palette().color(QPalette::Base), QColor(Qt::white));
}

TEST_F(Controls, theLayoutStartsAtTheDesignPlaces)
{
    const ConsoleLayout layout;
    const std::initializer_list<std::pair<const char *, Twips::Rect>> places = {
        {"picMiddlePanel", layout.picMiddlePanel},
        {"picLateralPanel", layout.picLateralPanel},
        {"txtTerm", layout.txtTerm},
        {"fraCommunication", layout.fraCommunication},
        {"fraQueueDetails", layout.fraQueueDetails},
        {"fraSentDetails", layout.fraSentDetails},
        {"grdQueue", layout.grdQueue},
        {"grdSentDetails", layout.grdSentDetails},
        {"btnStart", layout.btnStart},
        {"btnStop", layout.btnStop},
        {"btnClearQueue", layout.btnClearQueue}};
    for (const auto &[name, place] : places) {
        const auto controls = ConsoleDesign::controls();
        const auto found =
            std::find_if(controls.begin(), controls.end(), [name = name](const auto &design) {
                return design.name == QLatin1String(name);
            });
        ASSERT_NE(found, controls.end());
        EXPECT_EQ(found->place, place) << name;
    }
}

TEST_F(Controls, buttonsHaveTheirPictures)
{
    loadAsServer();
    for (const char *const name : {"btnDeviceConfig", "btnTestDevice", "btnSend", "btnImport",
                                   "btnStart", "btnStop", "btnClearQueue"}) {
        const auto *const button = control<PictureButton>(name);
        EXPECT_FALSE(button->icon().isNull()) << name;
        const QImage picture = button->icon().pixmap(button->iconSize()).toImage();
        EXPECT_GT(qAlpha(picture.pixel(picture.width() / 2, picture.height() / 2)) +
                      qAlpha(picture.pixel(picture.width() / 2, picture.height() / 3)),
                  0)
            << name;
    }
}

} // namespace norvane
