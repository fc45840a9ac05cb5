#include "gsm-simulator/DeliverRequest.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const QDateTime now(QDate(2026, 3, 9), QTime(12, 0), Qt::OffsetFromUTC, 3600);

DeliverRequest requestOf(const QByteArray &json)
{
    const auto read = readDeliverRequest(json, now);
    const auto *request = std::get_if<DeliverRequest>(&read);
    if (request == nullptr) {
        ADD_FAILURE() << json.data() << ": " << std::get<ControlFault>(read).reason.data();
        return {};
    }
    return *request;
}

QByteArray faultOf(const QByteArray &json)
{
    const auto read = readDeliverRequest(json, now);
    const auto *fault = std::get_if<ControlFault>(&read);
    return fault != nullptr ? fault->reason : QByteArray();
}

} // namespace

TEST(DeliverRequest, senderAndTextAreEnough)
{
    const DeliverRequest request = requestOf(R"({"from":"+34600111222","text":"hola"})");
    EXPECT_EQ(request.message.sender, (Address{u"+34600111222"_s, Address::internationalType}));
    EXPECT_EQ(request.message.text, u"hola"_s);
    EXPECT_EQ(request.message.coding, Coding::Gsm7);
    EXPECT_EQ(request.message.dataCodingScheme, 0);
    EXPECT_EQ(request.message.time, now);
    EXPECT_FALSE(request.message.place || request.message.ports);
    EXPECT_TRUE(request.order.empty());
    EXPECT_EQ(request.delay.count(), 0);
}

TEST(DeliverRequest, theTypeOfASenderIsGuessedOrTold)
{
    const auto senderOf = [](const QByteArray &members) {
        return requestOf("{\"text\":\"\"," + members + '}').message.sender;
    };
    EXPECT_EQ(senderOf(R"("from":"600")"), (Address{u"600"_s, Address::unknownType}));
    EXPECT_EQ(senderOf(R"("from":"600","type":"national")"),
              (Address{u"600"_s, Address::nationalType}));
    EXPECT_EQ(senderOf(R"("from":"600","type":"international")"),
              (Address{u"+600"_s, Address::internationalType}));
    EXPECT_EQ(senderOf(R"("from":"600","type":"alphanumeric")"),
              (Address{u"600"_s, Address::alphanumericType}));
    EXPECT_EQ(senderOf(R"("from":"Banco")"), (Address{u"Banco"_s, Address::alphanumericType}));
}

TEST(DeliverRequest, theCodingIsTheNarrowestThatHoldsTheText)
{
    EXPECT_EQ(requestOf(R"({"from":"1","text":"[€]"})").message.coding, Coding::Gsm7);
    EXPECT_EQ(requestOf(R"({"from":"1","text":"á"})").message.coding, Coding::Ucs2);
    EXPECT_EQ(requestOf(R"({"from":"1","text":"á"})").message.dataCodingScheme, 8);
    EXPECT_EQ(requestOf(R"({"from":"1","text":"á","single":"es"})").message.coding, Coding::Gsm7);
    EXPECT_EQ(requestOf(R"({"from":"1","text":"a","coding":"ucs2"})").message.coding, Coding::Ucs2);
    EXPECT_EQ(requestOf(R"({"from":"1","data":"00ff"})").message.coding, Coding::Octets);
}

TEST(DeliverRequest, everyMemberArrives)
{
    const DeliverRequest request = requestOf(
        R"({"from":"1","text":"ola","single":"es","locking":"pt","class":0,"pid":65,)"
        R"("time":"2025-12-31T23:59:58-03:30","bits":16,"reference":65535,"order":[2,1,2],)"
        R"("port":2948,"fromPort":9200,"delay":1500})");
    EXPECT_EQ(request.message.alphabet, (Alphabet{Language::Spanish, Language::Portuguese}));
    EXPECT_EQ(request.message.dataCodingScheme, 0x10);
    EXPECT_EQ(request.message.protocol, 65);
    EXPECT_EQ(request.message.time.offsetFromUtc(), -12600);
    EXPECT_TRUE(request.message.hasWideReference);
    EXPECT_EQ(request.message.reference, 65535);
    EXPECT_EQ(request.order, (std::vector<int>{2, 1, 2}));
    ASSERT_TRUE(request.message.ports);
    EXPECT_EQ(request.message.ports->destination, 2948);
    EXPECT_EQ(request.message.ports->origin, 9200);
    EXPECT_TRUE(request.message.ports->isWide);
    EXPECT_EQ(request.delay.count(), 1500);
    EXPECT_EQ(requestOf(R"({"from":"1","text":"x","dcs":241})").message.dataCodingScheme, 241);
    EXPECT_EQ(
        requestOf(R"({"from":"1","text":"x","part":2,"parts":3,"reference":9})").message.place,
        (Concatenation{9, 2, 3}));
    EXPECT_FALSE(
        requestOf(R"({"from":"1","data":"","port":1,"portBits":8})").message.ports->isWide);
}

TEST(DeliverRequest, aValueThatIsNoneIsRefusedByName)
{
    struct Row
    {
        const char *members;
        const char *name;
    };
    for (const Row &row :
         {Row{R"("text":"x")", "from"},
          Row{R"("from":7,"text":"x")", "from"},
          Row{R"("from":"","text":"x")", "from"},
          Row{R"("from":"123456789012345678901","text":"x")", "from"},
          Row{R"("from":"Жук","text":"x")", "from"},
          Row{R"("from":"+1","type":"national","text":"x")", "from"},
          Row{R"("from":"abc","type":"national","text":"x")", "from"},
          Row{R"("from":"1","type":"x","text":"x")", "type"},
          Row{R"("from":"1")", "text"},
          Row{R"("from":"1","text":1)", "text"},
          Row{R"("from":"1","data":"0")", "data"},
          Row{R"("from":"1","data":"0g")", "data"},
          Row{R"("from":"1","text":"x","data":"00")", "text"},
          Row{R"("from":"1","text":"x","coding":"8bit")", "coding"},
          Row{R"("from":"1","data":"00","coding":"gsm7")", "coding"},
          Row{R"("from":"1","text":"x","coding":"ucs2","single":"es")", "coding"},
          Row{R"("from":"1","text":"x","single":"tr")", "single"},
          Row{R"("from":"1","text":"x","locking":3)", "locking"},
          Row{R"("from":"1","text":"x","class":4)", "class"},
          Row{R"("from":"1","text":"x","class":-1)", "class"},
          Row{R"("from":"1","text":"x","class":"1")", "class"},
          Row{R"("from":"1","text":"x","class":0.5)", "class"},
          Row{R"("from":"1","text":"x","dcs":8)", "dcs"},
          Row{R"("from":"1","text":"x","pid":256)", "pid"},
          Row{R"("from":"1","text":"x","time":"noon")", "time"},
          Row{R"("from":"1","text":"x","time":"2026-03-09T12:00:00")", "time"},
          Row{R"("from":"1","text":"x","time":"2026-03-09T12:00:00+01:01")", "time"},
          Row{R"("from":"1","text":"x","bits":9)", "bits"},
          Row{R"("from":"1","text":"x","reference":256)", "reference"},
          Row{R"("from":"1","text":"x","part":1)", "part"},
          Row{R"("from":"1","text":"x","part":3,"parts":2)", "part"},
          Row{R"("from":"1","text":"x","order":[])", "order"},
          Row{R"("from":"1","text":"x","order":[0])", "order"},
          Row{R"("from":"1","text":"x","order":1)", "order"},
          Row{R"("from":"1","text":"x","port":65536)", "port"},
          Row{R"("from":"1","text":"x","port":256,"portBits":8)", "port"},
          Row{R"("from":"1","text":"x","port":1,"portBits":12)", "portBits"},
          Row{R"("from":"1","text":"x","fromPort":1)", "fromPort"},
          Row{R"("from":"1","text":"x","delay":3600001)", "delay"},
          Row{R"("from":"1","text":"x","txt":"")", "txt"},
          Row{R"("from":"1","text":"x","Ж":"")", "?"}}) {
        const QByteArray fault = faultOf('{' + QByteArray(row.members) + '}');
        EXPECT_TRUE(fault.endsWith(' ' + QByteArray(row.name))) << row.members << fault.data();
    }
}

TEST(DeliverRequest, whatIsNoObjectIsRefused)
{
    for (const char *text : {"", "[]", "1", "{", "{}x", "\"from\"", "{\"from\":\"1\",}", "\xFF"})
        EXPECT_EQ(faultOf(text), "a JSON object is needed") << text;
    EXPECT_EQ(faultOf(QByteArray("[").repeated(100'000)), "a JSON object is needed");
}

} // namespace simulator

} // namespace norvane
