#include "system/WholePath.h"

#include "foundation/Normalisation.h"
#include "foundation/ui/CaptionedFrame.h"

namespace norvane {

using namespace Qt::StringLiterals;

TEST_F(WholePath, aMessageTypedInTheWindowReachesTheDevice)
{
    auto *const phone = control<QLineEdit>("txtPhone");
    auto *const message = control<MessageEdit>("txtMessage");
    QTest::keyClicks(phone, u"+34 600 123 456"_s);
    QTest::keyClicks(message, u"Hola mundo"_s);
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    waitForReceived(1);
    EXPECT_EQ(device->messages().first().value(u"number"_s).toString(), u"+34600123456"_s);
    EXPECT_EQ(received(0), u"Hola mundo"_s);
}

TEST_F(WholePath, theConsoleShowsStateQueueRowAndTerminal)
{
    send(u"912345678"_s, u"Hola"_s);
    auto *const sent = control<QTableView>("grdSentDetails");
    ASSERT_TRUE(eventually([&] { return sent->model()->rowCount() == 1; }));
    EXPECT_EQ(sent->model()->index(0, 1).data().toString(), u"912345678"_s);
    EXPECT_EQ(sent->model()->index(0, 2).data().toString(), u"Hola"_s);
    EXPECT_EQ(control<CaptionedFrame>("fraSentDetails")->caption(), GS(3760009) + u" ( 1 )"_s);
    EXPECT_TRUE(
        control<TerminalView>("txtTerm")->text().endsWith(GS(3760023, u"912345678"_s) + u"\r\n"_s));
    EXPECT_EQ(label("lblEngineStatus"), GS(3760014));
    EXPECT_FALSE(label("lblDeviceStatus").isEmpty());
    EXPECT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760013); }));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760052));
}

TEST_F(WholePath, accentsArriveStripped)
{
    send(u"1"_s, u"Coração à João"_s);
    waitForReceived(1);
    EXPECT_EQ(received(0), u"Coracao a Joao"_s);
}

TEST_F(WholePath, signsArriveAsTheConsolesNormalisationLeavesThem)
{
    const QString text = u"Preço 10 € [ok]"_s;
    send(u"1"_s, text);
    waitForReceived(1);
    EXPECT_EQ(received(0), u"Preco 10 ? [ok]"_s);
    EXPECT_EQ(received(0), NormalizeSMSText(false, text));
}

TEST_F(WholePath, aTextOf160CharactersArrivesCharacterForCharacter)
{
    QString text;
    while (text.size() < 160)
        text += u"0123456789 abcdefghij KLMNOPQRST .,;:!?"_s;
    text.truncate(160);
    send(u"1"_s, text);
    waitForReceived(1);
    EXPECT_EQ(received(0), text);
    EXPECT_EQ(device->messages().size(), 1);
}

TEST_F(WholePath, charactersOutsideTheGsmAlphabetArriveToo)
{
    const QString text = u"nº 5 © Ærø"_s;
    send(u"1"_s, text);
    waitForReceived(1);
    EXPECT_EQ(received(0), NormalizeSMSText(false, text));
}

TEST_F(WholePath, aMessageForLaterWaitsInTheGrid)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(u"912345678"_s, u"Mañana"_s);
    auto *const queue = control<QTableView>("grdQueue");
    ASSERT_TRUE(eventually([&] { return queue->model()->rowCount() == 1; }));
    EXPECT_EQ(queue->model()->index(0, 1).data().toString(), u"912345678"_s);
    EXPECT_EQ(queue->model()->index(0, 2).data().toString(), u"Manana"_s);
    EXPECT_EQ(label("lblQueueSize"), GS(3760025, 1));
    EXPECT_TRUE(device->messages().isEmpty());
}

TEST_F(WholePath, whatWaitedIsThereForTheNextConsole)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(u"912345678"_s, u"x"_s);
    closeConsole();
    openConsole();
    EXPECT_EQ(control<QTableView>("grdQueue")->model()->rowCount(), 1);
    EXPECT_EQ(label("lblEngineStatus"), GS(3760014));
}

TEST_F(WholePath, stopKeepsTheQueueAndStartSendsIt)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(u"1"_s, u"later"_s);
    ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760014); }));
    QTest::mouseClick(control<QPushButton>("btnStop"), Qt::LeftButton);
    ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760026); }));
    EXPECT_EQ(boxes.shown.last().text, GS(3760017, 1));

    // What comes in by another way than the send button doesn't start the engine.
    const auto other = makeProxy();
    other->AddSMS(u"2"_s, u"due"_s, {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
    ASSERT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760025, 2); }));
    EXPECT_TRUE(device->messages().isEmpty());
    EXPECT_EQ(label("lblEngineStatus"), GS(3760026));

    QTest::mouseClick(control<QPushButton>("btnStart"), Qt::LeftButton);
    waitForReceived(1);
    EXPECT_EQ(received(0), u"due"_s);
    EXPECT_TRUE(
        eventually([&] { return control<QTableView>("grdQueue")->model()->rowCount() == 1; }));
}

TEST_F(WholePath, clearEmptiesTheGridThroughTheEnginesEvent)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(u"1"_s, u"later"_s);
    auto *const queue = control<QTableView>("grdQueue");
    ASSERT_TRUE(eventually([&] { return queue->model()->rowCount() == 1; }));
    QTest::mouseClick(control<QPushButton>("btnClearQueue"), Qt::LeftButton);
    EXPECT_TRUE(eventually([&] { return queue->model()->rowCount() == 0; }));
    EXPECT_EQ(label("lblQueueSize"), GS(3760013));
}

TEST_F(WholePath, aDeviceThatIsNotThereIsToldInTheTerminal)
{
    storeDevice(u"/nowhere/gsm, 9600"_s);
    send(u"1"_s, u"x"_s);
    const QString word = GS(3760032);
    EXPECT_TRUE(
        eventually([&] { return control<TerminalView>("txtTerm")->text().contains(word); }));
    EXPECT_EQ(label("lblQueueSize"), GS(3760025, 1));
}

} // namespace norvane
