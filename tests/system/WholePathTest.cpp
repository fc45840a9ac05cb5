#include "system/WholePath.h"

#include "NorvaneSMS/queue/Normalisation.h"
#include "foundation/ui/CaptionedFrame.h"

TEST_F(WholePath, aMessageTypedInTheWindowReachesTheDevice)
{
    auto *const phone = control<QLineEdit>("txtPhone");
    auto *const message = control<MessageEdit>("txtMessage");
    QTest::keyClicks(phone, QStringLiteral("+34 600 123 456"));
    QTest::keyClicks(message, QStringLiteral("Hola mundo"));
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    waitForReceived(1);
    EXPECT_EQ(device->messages().first().value(QStringLiteral("number")).toString(),
              QStringLiteral("+34600123456"));
    EXPECT_EQ(received(0), QStringLiteral("Hola mundo"));
}

TEST_F(WholePath, theConsoleShowsStateQueueRowAndTerminal)
{
    send(QStringLiteral("912345678"), QStringLiteral("Hola"));
    auto *const sent = control<QTableView>("grdSentDetails");
    ASSERT_TRUE(eventually([&] { return sent->model()->rowCount() == 1; }));
    EXPECT_EQ(sent->model()->index(0, 1).data().toString(), QStringLiteral("912345678"));
    EXPECT_EQ(sent->model()->index(0, 2).data().toString(), QStringLiteral("Hola"));
    EXPECT_EQ(control<CaptionedFrame>("fraSentDetails")->caption(),
              GS(3760009) + QStringLiteral(" ( 1 )"));
    EXPECT_TRUE(control<TerminalView>("txtTerm")->text().endsWith(
        GS(3760023, QStringLiteral("912345678")) + QStringLiteral("\r\n")));
    EXPECT_EQ(label("lblEngineStatus"), GS(3760014));
    EXPECT_FALSE(label("lblDeviceStatus").isEmpty());
    EXPECT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760013); }));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760052));
}

TEST_F(WholePath, accentsArriveStripped)
{
    send(QStringLiteral("1"), QStringLiteral("Coração à João"));
    waitForReceived(1);
    EXPECT_EQ(received(0), QStringLiteral("Coracao a Joao"));
}

TEST_F(WholePath, signsArriveAsTheConsolesNormalisationLeavesThem)
{
    const QString text = QStringLiteral("Preço 10 € [ok]");
    send(QStringLiteral("1"), text);
    waitForReceived(1);
    EXPECT_EQ(received(0), QStringLiteral("Preco 10 ? [ok]"));
    EXPECT_EQ(received(0), NormalizeSMSText(false, text));
}

TEST_F(WholePath, aTextOf160CharactersArrivesCharacterForCharacter)
{
    QString text;
    while (text.size() < 160)
        text += QStringLiteral("0123456789 abcdefghij KLMNOPQRST .,;:!?");
    text.truncate(160);
    send(QStringLiteral("1"), text);
    waitForReceived(1);
    EXPECT_EQ(received(0), text);
    EXPECT_EQ(device->messages().size(), 1);
}

TEST_F(WholePath, charactersOutsideTheGsmAlphabetArriveToo)
{
    const QString text = QStringLiteral("nº 5 © Ærø");
    send(QStringLiteral("1"), text);
    waitForReceived(1);
    EXPECT_EQ(received(0), NormalizeSMSText(false, text));
}

TEST_F(WholePath, aMessageForLaterWaitsInTheGrid)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(QStringLiteral("912345678"), QStringLiteral("Mañana"));
    auto *const queue = control<QTableView>("grdQueue");
    ASSERT_TRUE(eventually([&] { return queue->model()->rowCount() == 1; }));
    EXPECT_EQ(queue->model()->index(0, 1).data().toString(), QStringLiteral("912345678"));
    EXPECT_EQ(queue->model()->index(0, 2).data().toString(), QStringLiteral("Manana"));
    EXPECT_EQ(label("lblQueueSize"), GS(3760025, 1));
    EXPECT_TRUE(device->messages().isEmpty());
}

TEST_F(WholePath, whatWaitedIsThereForTheNextConsole)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(QStringLiteral("912345678"), QStringLiteral("x"));
    closeConsole();
    openConsole();
    EXPECT_EQ(control<QTableView>("grdQueue")->model()->rowCount(), 1);
    EXPECT_EQ(label("lblEngineStatus"), GS(3760014));
}

TEST_F(WholePath, stopKeepsTheQueueAndStartSendsIt)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(QStringLiteral("1"), QStringLiteral("later"));
    ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760014); }));
    QTest::mouseClick(control<QPushButton>("btnStop"), Qt::LeftButton);
    ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760026); }));
    EXPECT_EQ(boxes.shown.last().text, GS(3760017, 1));

    // What comes in by another way than the send button doesn't start the engine.
    const auto other = makeProxy();
    other->AddSMS(QStringLiteral("2"), QStringLiteral("due"),
                  {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
    ASSERT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760025, 2); }));
    EXPECT_TRUE(device->messages().isEmpty());
    EXPECT_EQ(label("lblEngineStatus"), GS(3760026));

    QTest::mouseClick(control<QPushButton>("btnStart"), Qt::LeftButton);
    waitForReceived(1);
    EXPECT_EQ(received(0), QStringLiteral("due"));
    EXPECT_TRUE(
        eventually([&] { return control<QTableView>("grdQueue")->model()->rowCount() == 1; }));
}

TEST_F(WholePath, clearEmptiesTheGridThroughTheEnginesEvent)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2100, 1, 1));
    send(QStringLiteral("1"), QStringLiteral("later"));
    auto *const queue = control<QTableView>("grdQueue");
    ASSERT_TRUE(eventually([&] { return queue->model()->rowCount() == 1; }));
    QTest::mouseClick(control<QPushButton>("btnClearQueue"), Qt::LeftButton);
    EXPECT_TRUE(eventually([&] { return queue->model()->rowCount() == 0; }));
    EXPECT_EQ(label("lblQueueSize"), GS(3760013));
}

TEST_F(WholePath, aDeviceThatIsNotThereIsToldInTheTerminal)
{
    storeDevice(QStringLiteral("/nowhere/gsm, 9600"));
    send(QStringLiteral("1"), QStringLiteral("x"));
    const QString word = GS(3760032);
    EXPECT_TRUE(
        eventually([&] { return control<TerminalView>("txtTerm")->text().contains(word); }));
    EXPECT_EQ(label("lblQueueSize"), GS(3760025, 1));
}
