#include "NorvaneSMS/console/ConsoleDesign.h"
#include "foundation/TextId.h"

namespace norvane {

namespace {

using ConsoleDesign::Caption;
using ConsoleDesign::Control;
using ConsoleDesign::Kind;
using ConsoleDesign::noTab;
using ConsoleDesign::noText;
using S = QLatin1String;

// clang-format off
const Control allControls[] = {
    {S("picTopPanel"), Kind::Panel, S(), {0, 0, 15015, 3300}, S(), noText, 0},
    {S("btnDeviceConfig"), Kind::Button, S("picTopPanel"), {150, 210, 1155, 840}, S("Configurar"), TextId::ConfigureButton, 8, S("button-configure"), 24},
    {S("btnTestDevice"), Kind::Button, S("picTopPanel"), {1605, 210, 1080, 840}, S("Testar dispositivo"), TextId::TestDeviceButton, 9, S("button-test"), 24, S("button-test-disabled")},
    {S("imgLogo(1)"), Kind::Image, S("picTopPanel"), {6270, 210, 2190, 660}, S(), TextId::ConsoleTitle, noTab, S("logo")},
    {S("imgLogo(0)"), Kind::Image, S("picTopPanel"), {6300, 375, 1920, 675}, S(), TextId::ConsoleTitle, noTab, S("logo-small")},

    {S("fraSMSMessage"), Kind::Frame, S("picTopPanel"), {150, 1215, 8325, 1980}, S("Mensagem a Enviar"), TextId::MessageFrame, 1},
    {S("txtMessage"), Kind::MessageBox, S("fraSMSMessage"), {150, 255, 4470, 1365}, S(), TextId::MessageName, 5},
    {S("lblSMSChars"), Kind::Label, S("fraSMSMessage"), {150, 1695, 1935, 180}, S("Caracteres: 0 / 160"), noText, 7},
    {S("lblPhone"), Kind::Label, S("fraSMSMessage"), {4740, 255, 1395, 255}, S("Numero r\xE1pido"), TextId::PhoneLabel, 6},
    {S("txtPhone"), Kind::PhoneBox, S("fraSMSMessage"), {4740, 540, 1665, 315}, S(), noText, 4},
    {S("lblDeliveryDate"), Kind::Label, S("fraSMSMessage"), {4740, 1005, 1800, 255}, S("Data e hora de envio"), TextId::DeliveryDateLabel, 27},
    {S("dtDeliveryDate"), Kind::DateBox, S("fraSMSMessage"), {4725, 1260, 1215, 330}, S(), TextId::DeliveryDateName, 26},
    {S("tmDeliveryDate"), Kind::TimeBox, S("fraSMSMessage"), {5985, 1260, 915, 330}, S(), TextId::DeliveryTimeName, 28},
    {S("btnSend"), Kind::Button, S("fraSMSMessage"), {7065, 255, 1065, 735}, S("Enviar"), TextId::SendButton, 2, S("button-send"), 24},
    {S("btnImport"), Kind::Button, S("fraSMSMessage"), {7065, 1080, 1065, 735}, S("Importar N\xBA"), TextId::ImportButton, 3, S("button-import"), 32},

    {S("picBottomPanel"), Kind::Panel, S(), {0, 5655, 15015, 1620}, S(), noText, 10},
    {S("fraEngineStatus"), Kind::Frame, S("picBottomPanel"), {150, 60, 1800, 1440}, S("Estado"), noText, 17},
    {S("imgEngineStatus(0)"), Kind::Image, S("fraEngineStatus"), {540, 255, 720, 720}, S(), TextId::EngineStopped, noTab, S("engine-stopped")},
    {S("imgEngineStatus(1)"), Kind::Image, S("fraEngineStatus"), {540, 255, 720, 720}, S(), TextId::EngineRunning, noTab, S("engine-running")},
    {S("lblEngineStatus"), Kind::CentredLabel, S("fraEngineStatus"), {15, 1170, 1755, 240}, S("Iniciado"), TextId::EngineRunning, 18},
    {S("fraQueueStatus"), Kind::Frame, S("picBottomPanel"), {1920, 60, 3345, 1440}, S("Lista de envio"), TextId::QueueFrame, 14},
    {S("imgQueue(0)"), Kind::Image, S("fraQueueStatus"), {1335, 255, 720, 720}, S(), TextId::QueueEmpty, noTab, S("queue-empty")},
    {S("imgQueue(1)"), Kind::Image, S("fraQueueStatus"), {1335, 180, 720, 720}, S(), TextId::QueueWaitingName, noTab, S("queue-waiting")},
    {S("lblQueueSize"), Kind::CentredLabel, S("fraQueueStatus"), {15, 930, 3285, 240}, S("Sem itens a enviar"), TextId::QueueEmpty, 15},
    {S("lblEstimated"), Kind::CentredLabel, S("fraQueueStatus"), {15, 1170, 3285, 240}, S("Tempo previsto: 00:00:00"), noText, 16},
    {S("fraDeviceStatus"), Kind::Frame, S("picBottomPanel"), {5235, 60, 3240, 1440}, S("Dispositivo"), TextId::DeviceFrame, 11},
    {S("imgQueue(2)"), Kind::Image, S("fraDeviceStatus"), {825, 165, 720, 720}, S(), TextId::DeviceName, noTab, S("device")},
    {S("lblDeviceInfo"), Kind::CentredLabel, S("fraDeviceStatus"), {15, 930, 3195, 240}, S("Dispositivo GSM"), TextId::DeviceName, 12},
    {S("lblDeviceStatus"), Kind::CentredLabel, S("fraDeviceStatus"), {15, 1170, 3195, 240}, S(), noText, 13},

    {S("picMiddlePanel"), Kind::Panel, S(), {0, 3255, 8670, 2445}, S(), noText, 19},
    {S("fraCommunication"), Kind::Frame, S("picMiddlePanel"), {150, 0, 8325, 2355}, S("Detalhe de Comunica\xE7\xF5" "es"), TextId::CommunicationFrame, 20},
    {S("txtTerm"), Kind::Terminal, S("fraCommunication"), {165, 300, 7965, 1875}, S(), TextId::CommunicationFrame, 21},

    {S("picLateralPanel"), Kind::Panel, S(), {8610, 0, 6345, 10290}, S(), noText, 22},
    {S("fraQueueDetails"), Kind::Frame, S("picLateralPanel"), {15, 135, 6270, 4170}, S("Conte\xFA" "do da lista de envio"), TextId::QueueDetailsFrame, 23},
    {S("grdQueue"), Kind::QueueGrid, S("fraQueueDetails"), {150, 300, 5940, 3030}, S(), TextId::QueueDetailsFrame, 25},
    {S("btnStart"), Kind::Button, S("fraQueueDetails"), {4170, 3510, 630, 510}, S(), TextId::StartTip, 32, S("button-start"), 24, S("button-start-disabled")},
    {S("btnStop"), Kind::Button, S("fraQueueDetails"), {4815, 3510, 630, 510}, S(), TextId::StopTip, 33, S("button-stop"), 24, S("button-stop-disabled")},
    {S("btnClearQueue"), Kind::Button, S("fraQueueDetails"), {5460, 3510, 630, 510}, S(), TextId::ClearQueueTip, 24, S("button-clear"), 24},
    {S("fraSentDetails"), Kind::Frame, S("picLateralPanel"), {15, 4380, 6270, 2775}, S("Mensagens enviadas ( 0 )"), TextId::SentFrame, 29},
    {S("grdSentDetails"), Kind::SentGrid, S("fraSentDetails"), {150, 300, 5940, 2205}, S(), TextId::SentFrame, 30},
};
// clang-format on

} // namespace

std::span<const Control> ConsoleDesign::controls()
{
    return allControls;
}

std::vector<Caption> ConsoleDesign::captions()
{
    // The frame of the device is given another text before its own.
    std::vector<Caption> captions{{S("fraDeviceStatus"), TextId::StatusFrame}};
    for (const Control &control : allControls) {
        if (control.textId != noText && !control.text.isEmpty())
            captions.push_back({control.name, control.textId});
    }
    return captions;
}

std::vector<Caption> ConsoleDesign::names()
{
    std::vector<Caption> names;
    for (const Control &control : allControls) {
        if (control.textId != noText && control.text.isEmpty())
            names.push_back({control.name, control.textId});
    }
    return names;
}

} // namespace norvane
