#include "NorvaneSMS/console/ConsoleDesign.h"

namespace {

using ConsoleDesign::Caption;
using ConsoleDesign::Control;
using ConsoleDesign::Kind;
using ConsoleDesign::noTab;
using S = QLatin1String;

// clang-format off
const Control allControls[] = {
    {S("picTopPanel"), Kind::Panel, S(), {0, 0, 15015, 3300}, S(), 0},
    {S("btnDeviceConfig"), Kind::Button, S("picTopPanel"), {150, 210, 1155, 840}, S("Configurar"), 8, S("button-configure"), 24},
    {S("btnTestDevice"), Kind::Button, S("picTopPanel"), {1605, 210, 1080, 840}, S("Testar dispositivo"), 9, S("button-test"), 24, S("button-test-disabled")},
    {S("imgLogo(1)"), Kind::Image, S("picTopPanel"), {6270, 210, 2190, 660}, S(), noTab, S("logo")},
    {S("imgLogo(0)"), Kind::Image, S("picTopPanel"), {6300, 375, 1920, 675}, S(), noTab, S("logo-small")},

    {S("fraSMSMessage"), Kind::Frame, S("picTopPanel"), {150, 1215, 8325, 1980}, S("Mensagem a Enviar"), 1},
    {S("txtMessage"), Kind::MessageBox, S("fraSMSMessage"), {150, 255, 4470, 1365}, S(), 5},
    {S("lblSMSChars"), Kind::Label, S("fraSMSMessage"), {150, 1695, 1935, 180}, S("Caracteres: 0 / 160"), 7},
    {S("lblPhone"), Kind::Label, S("fraSMSMessage"), {4740, 255, 1395, 255}, S("Numero r\xE1pido"), 6},
    {S("txtPhone"), Kind::PhoneBox, S("fraSMSMessage"), {4740, 540, 1665, 315}, S(), 4},
    {S("lblDeliveryDate"), Kind::Label, S("fraSMSMessage"), {4740, 1005, 1800, 255}, S("Data e hora de envio"), 27},
    {S("dtDeliveryDate"), Kind::DateBox, S("fraSMSMessage"), {4725, 1260, 1215, 330}, S(), 26},
    {S("tmDeliveryDate"), Kind::TimeBox, S("fraSMSMessage"), {5985, 1260, 915, 330}, S(), 28},
    {S("btnSend"), Kind::Button, S("fraSMSMessage"), {7065, 255, 1065, 735}, S("Enviar"), 2, S("button-send"), 24},
    {S("btnImport"), Kind::Button, S("fraSMSMessage"), {7065, 1080, 1065, 735}, S("Importar N\xBA"), 3, S("button-import"), 32},

    {S("picBottomPanel"), Kind::Panel, S(), {0, 5655, 15015, 1620}, S(), 10},
    {S("fraEngineStatus"), Kind::Frame, S("picBottomPanel"), {150, 60, 1800, 1440}, S("Estado"), 17},
    {S("imgEngineStatus(0)"), Kind::Image, S("fraEngineStatus"), {540, 255, 720, 720}, S(), noTab, S("engine-stopped")},
    {S("imgEngineStatus(1)"), Kind::Image, S("fraEngineStatus"), {540, 255, 720, 720}, S(), noTab, S("engine-running")},
    {S("lblEngineStatus"), Kind::CentredLabel, S("fraEngineStatus"), {15, 1170, 1755, 240}, S("Iniciado"), 18},
    {S("fraQueueStatus"), Kind::Frame, S("picBottomPanel"), {1920, 60, 3345, 1440}, S("Lista de envio"), 14},
    {S("imgQueue(0)"), Kind::Image, S("fraQueueStatus"), {1335, 255, 720, 720}, S(), noTab, S("queue-empty")},
    {S("imgQueue(1)"), Kind::Image, S("fraQueueStatus"), {1335, 180, 720, 720}, S(), noTab, S("queue-waiting")},
    {S("lblQueueSize"), Kind::CentredLabel, S("fraQueueStatus"), {15, 930, 3285, 240}, S("Sem itens a enviar"), 15},
    {S("lblEstimated"), Kind::CentredLabel, S("fraQueueStatus"), {15, 1170, 3285, 240}, S("Tempo previsto: 00:00:00"), 16},
    {S("fraDeviceStatus"), Kind::Frame, S("picBottomPanel"), {5235, 60, 3240, 1440}, S("Dispositivo"), 11},
    {S("imgQueue(2)"), Kind::Image, S("fraDeviceStatus"), {825, 165, 720, 720}, S(), noTab, S("device")},
    {S("lblDeviceInfo"), Kind::CentredLabel, S("fraDeviceStatus"), {15, 930, 3195, 240}, S("Dispositivo GSM"), 12},
    {S("lblDeviceStatus"), Kind::CentredLabel, S("fraDeviceStatus"), {15, 1170, 3195, 240}, S(), 13},

    {S("picMiddlePanel"), Kind::Panel, S(), {0, 3255, 8670, 2445}, S(), 19},
    {S("fraCommunication"), Kind::Frame, S("picMiddlePanel"), {150, 0, 8325, 2355}, S("Detalhe de Comunica\xE7\xF5" "es"), 20},
    {S("txtTerm"), Kind::Terminal, S("fraCommunication"), {165, 300, 7965, 1875}, S(), 21},

    {S("picLateralPanel"), Kind::Panel, S(), {8610, 0, 6345, 10290}, S(), 22},
    {S("fraQueueDetails"), Kind::Frame, S("picLateralPanel"), {15, 135, 6270, 4170}, S("Conte\xFA" "do da lista de envio"), 23},
    {S("grdQueue"), Kind::QueueGrid, S("fraQueueDetails"), {150, 300, 5940, 3030}, S(), 25},
    {S("btnStart"), Kind::Button, S("fraQueueDetails"), {4170, 3510, 630, 510}, S(), 32, S("button-start"), 24, S("button-start-disabled")},
    {S("btnStop"), Kind::Button, S("fraQueueDetails"), {4815, 3510, 630, 510}, S(), 33, S("button-stop"), 24, S("button-stop-disabled")},
    {S("btnClearQueue"), Kind::Button, S("fraQueueDetails"), {5460, 3510, 630, 510}, S(), 24, S("button-clear"), 24},
    {S("fraSentDetails"), Kind::Frame, S("picLateralPanel"), {15, 4380, 6270, 2775}, S("Mensagens enviadas ( 0 )"), 29},
    {S("grdSentDetails"), Kind::SentGrid, S("fraSentDetails"), {150, 300, 5940, 2205}, S(), 30},
};

const Caption allCaptions[] = {
    {S("btnDeviceConfig"), 3760001},
    {S("btnTestDevice"), 3760002},
    {S("btnSend"), 3760003},
    {S("btnImport"), 3760004},
    {S("fraSMSMessage"), 3760005},
    {S("lblPhone"), 3760006},
    {S("lblDeliveryDate"), 3760007},
    {S("fraQueueDetails"), 3760008},
    {S("fraSentDetails"), 3760009},
    {S("fraDeviceStatus"), 3760010},
    {S("fraDeviceStatus"), 3760012},
    {S("fraQueueStatus"), 3760011},
    {S("lblQueueSize"), 3760013},
    {S("lblEngineStatus"), 3760014},
    {S("lblDeviceInfo"), 3760015},
    {S("fraCommunication"), 3760090},
};

const Caption allNames[] = {
    {S("imgLogo(0)"), 3760000},
    {S("imgLogo(1)"), 3760000},
    {S("txtMessage"), 3760105},
    {S("dtDeliveryDate"), 3760106},
    {S("tmDeliveryDate"), 3760107},
    {S("imgEngineStatus(0)"), 3760026},
    {S("imgEngineStatus(1)"), 3760014},
    {S("imgQueue(0)"), 3760013},
    {S("imgQueue(1)"), 3760108},
    {S("imgQueue(2)"), 3760015},
    {S("txtTerm"), 3760090},
    {S("grdQueue"), 3760008},
    {S("grdSentDetails"), 3760009},
    {S("btnStart"), 3760100},
    {S("btnStop"), 3760101},
    {S("btnClearQueue"), 3760102},
};
// clang-format on

} // namespace

std::span<const Control> ConsoleDesign::controls()
{
    return allControls;
}

std::span<const Caption> ConsoleDesign::captions()
{
    return allCaptions;
}

std::span<const Caption> ConsoleDesign::names()
{
    return allNames;
}
