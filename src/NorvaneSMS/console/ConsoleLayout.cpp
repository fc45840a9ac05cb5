#include "NorvaneSMS/console/ConsoleLayout.h"

namespace norvane {

namespace {

void move(Twips::Rect &control, const Twips::Rect &place)
{
    if (place.width >= 0 && place.height >= 0)
        control = place;
}

} // namespace

void resizeConsole(ConsoleLayout &layout, float width, float height)
{
    ConsoleLayout &l = layout;

    move(l.picMiddlePanel, {0, l.picMiddlePanel.top, l.picMiddlePanel.width,
                            height - l.topPanelHeight - l.bottomPanelHeight});
    move(l.fraCommunication, {150, 0, l.messageFrameWidth, l.picMiddlePanel.height});
    move(l.picLateralPanel, {l.picLateralPanel.left, 0, width - l.picLateralPanel.left, height});
    move(l.txtTerm, {l.txtTerm.left, l.txtTerm.top, l.txtTerm.width,
                     l.fraCommunication.height - l.txtTerm.top * 2});

    const float frameWidth = l.picLateralPanel.width - 150;
    move(l.fraSentDetails,
         {l.fraSentDetails.left, l.picLateralPanel.height - l.fraSentDetails.height - 140,
          frameWidth, l.fraSentDetails.height});
    move(l.fraQueueDetails, {l.fraQueueDetails.left, l.fraQueueDetails.top, frameWidth,
                             l.fraSentDetails.top - l.fraQueueDetails.top - 150});
    move(l.grdQueue,
         {l.grdQueue.left, l.grdQueue.top, l.fraQueueDetails.width - l.grdQueue.left * 2,
          l.fraQueueDetails.height - 1000});
    move(l.grdSentDetails,
         {l.grdSentDetails.left, l.grdSentDetails.top,
          l.fraSentDetails.width - l.grdSentDetails.left * 2, l.fraSentDetails.height - 450});

    const float buttonTop = l.grdQueue.top + l.grdQueue.height + 100;
    move(l.btnClearQueue, {l.grdQueue.left + l.grdQueue.width - l.btnClearQueue.width, buttonTop,
                           l.btnClearQueue.width, l.btnClearQueue.height});
    move(l.btnStop, {l.btnClearQueue.left - l.btnStop.width, l.btnClearQueue.top, l.btnStop.width,
                     l.btnStop.height});
    move(l.btnStart,
         {l.btnStop.left - l.btnStart.width, l.btnStop.top, l.btnStart.width, l.btnStart.height});
}

} // namespace norvane
