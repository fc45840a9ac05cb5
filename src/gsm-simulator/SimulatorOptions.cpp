#include "gsm-simulator/SimulatorOptions.h"

#include <QCommandLineParser>

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <tuple>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr int minBaudRate = 50;
constexpr int maxBaudRate = 4'000'000;
constexpr int maxLatency = 3'600'000;
constexpr int maxErrorCode = 65535;

struct OptionText
{
    const char *name;
    const char *value; ///< null: the option takes none
    const char *text;
};

constexpr OptionText optionTexts[] = {
    {"link", "path", "make this symbolic link to the modem's port"},
    {"socket", "path", "in its place: listen on this socket, for one client at a time"},
    {"log", "file", "append a line of JSON to this file for each part that is accepted"},
    {"pin", "code", "the SIM asks for this PIN (three tries)"},
    {"puk", "code", "what unblocks the SIM afterwards (12345678)"},
    {"latency", "ms", "answer a submission after so many milliseconds"},
    {"baud", "n", "pace the line to so many bits a second, 8N1"},
    {"fail-every", "n", "refuse every nth submission"},
    {"fail-code", "c", "with +CMS ERROR: c (38)"},
    {"first-reference", "n", "what the first +CMGS answers, 0 to 255 (0)"},
    {"report", "how-often", "answer a request for a status report: never, once or twice (once)"},
    {"report-delay", "ms", "from a message to its report, and from that to the next one (0)"},
    {"report-status", "n", "what reports say: the octet TP-ST, 0 to 255 (0)"},
    {"report-first", "n", "report this status before, as 32 to 47 for \"still trying\""},
    {"report-order", "which", "sent, or reversed for the last message's report first (sent)"},
    {"report-ways", "which", "what +CNMI takes for reports: cds, cdsi, both or none (both)"},
    {"report-memory", "name", "the memory that +CDSI tells of (SR, or the first memory)"},
    {"refuse-report-request", "c", "refuse what asks for a report with +CMS ERROR: c"},
    {"memories", "names", "the memories of messages, separated by commas (SM,ME,SR)"},
    {"memory-size", "name:n", "the places of a memory, more of them separated by commas (20)"},
    {"ack-timeout", "ms", "how long +CNMA is waited for after +CSMS=1 (5000)"},
    {"redeliver-after", "ms",
     "when the network delivers again what the modem hasn't accepted (10000)"},
    {"control", "path", "take commands on this socket, one a line"},
    {"incoming", "file", "run the commands of this file at the start, such as messages to deliver"},
    {"silent", nullptr, "never answer anything"},
    {"drop-after", "n", "unplug the modem after n accepted messages, and end"},
    {"lose-answer", nullptr, "with --drop-after: before the last of them is answered"},
    {"noise", nullptr, "put stray bytes between the lines"},
    {"seed", "n", "the seed of the stray bytes (1)"},
    {"urc", nullptr, "say things that nobody asked for"},
    {"urc-interval", "ms", "how often when idle (400)"},
    {"formats", "which", "message formats: both, pdu or text (both)"},
    {"signal", "n", "signal quality, 0 to 31, or 99 for unknown (20)"},
    {"registered", "n", "state of network registration, 0 to 5 (1)"},
    {"functionality", "n", "+CFUN at the start: 1, or 0 or 4 for a modem in flight mode (1)"},
    {"register-after", "ms", "time from the radio's start to the registration (0)"},
    {"refuse-bare-at", nullptr, "answer a bare AT with ERROR"},
    {"manufacturer", "name", "the manufacturer's name"},
    {"model", "name", "the model's name"},
    {"imei", "digits", "the modem's serial number"},
    {"imsi", "digits", "the subscriber's identity"},
    {"iccid", "digits", "the SIM card's number"},
    {"help", nullptr, "show this and end"},
    {"version", nullptr, "show the version and end"}};

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"A simulated GSM modem on a pseudo-terminal or a socket."_s);
    for (const OptionText &option : optionTexts) {
        parser.addOption({QString::fromLatin1(option.name), QString::fromLatin1(option.text),
                          QString::fromLatin1(option.value)});
    }
}

/// Reads option values and remembers the first that is wrong.
class Values
{
public:
    explicit Values(const QCommandLineParser &parser) : m_parser(parser) {}

    const QString &refusal() const { return m_refusal; }

    void number(const char *name, int least, int max, int &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        bool isNumber = false;
        const int given = m_parser.value(option).toInt(&isNumber);
        if (!isNumber || given < least || given > max) {
            refuse(option);
        } else {
            value = given;
        }
    }

    void milliseconds(const char *name, int least, std::chrono::milliseconds &value)
    {
        auto count = static_cast<int>(value.count());
        number(name, least, maxLatency, count);
        value = std::chrono::milliseconds(count);
    }

    void digits(const char *name, qsizetype least, qsizetype max, QByteArray &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        const QByteArray given = m_parser.value(option).toLatin1();
        const bool onlyDigits =
            std::all_of(given.begin(), given.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!onlyDigits || given.size() < least || given.size() > max) {
            refuse(option);
        } else {
            value = given;
        }
    }

    /// Text of one line, in printable ASCII as an AT answer can carry it.
    void name(const char *name, QByteArray &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        const QString given = m_parser.value(option);
        const bool printable =
            std::all_of(given.begin(), given.end(), [](QChar c) { return c >= u' ' && c <= u'~'; });
        if (given.isEmpty() || !printable) {
            refuse(option);
        } else {
            value = given.toLatin1();
        }
    }

    /// One word out of a few, each of which stands for a value.
    template <typename Value>
    void word(const char *name, std::initializer_list<std::pair<QLatin1StringView, Value>> words,
              Value &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        const QString given = m_parser.value(option);
        const auto found = std::find_if(words.begin(), words.end(),
                                        [&given](const auto &each) { return each.first == given; });
        if (found == words.end()) {
            refuse(option);
        } else {
            value = found->second;
        }
    }

    /// The words of a list, or none where it isn't given.
    QStringList list(const char *name) const
    {
        const QString option = QString::fromLatin1(name);
        return m_parser.isSet(option) ? m_parser.value(option).split(u',') : QStringList();
    }

    void refuse(const QString &option)
    {
        if (m_refusal.isEmpty())
            m_refusal = u"Bad value for --%1: \"%2\"."_s.arg(option, m_parser.value(option));
    }

private:
    const QCommandLineParser &m_parser;
    QString m_refusal;
};

void readReports(Values &values, ReportSettings &reports)
{
    constexpr int maxOctet = 255;
    values.word<int>("report", {{"never"_L1, 0}, {"once"_L1, 1}, {"twice"_L1, 2}}, reports.count);
    values.milliseconds("report-delay", 0, reports.delay);
    values.number("report-status", 0, maxOctet, reports.status);
    values.number("report-first", 0, maxOctet, reports.firstStatus);
    values.word<ReportOrder>(
        "report-order", {{"sent"_L1, ReportOrder::AsSent}, {"reversed"_L1, ReportOrder::Reversed}},
        reports.order);
    values.number("refuse-report-request", 0, maxErrorCode, reports.refusal);
}

/// Memories by their names; the first one is where messages arrive, and so none for reports.
void readMemories(Values &values, std::vector<MemorySettings> &memories)
{
    constexpr int maxPlaces = 1000;
    const QStringList names = values.list("memories");
    if (!names.isEmpty())
        memories.clear();
    const auto find = [&memories](const QByteArray &name) {
        return std::find_if(memories.begin(), memories.end(),
                            [&name](const MemorySettings &each) { return each.name == name; });
    };
    for (const QString &name : names) {
        const bool forReports = name == "SR"_L1 || name == "BM"_L1;
        const bool known = forReports || name == "SM"_L1 || name == "ME"_L1;
        if (!known || (memories.empty() && forReports) || find(name.toLatin1()) != memories.end())
            values.refuse(u"memories"_s);
        memories.push_back({name.toLatin1()});
    }
    for (const QString &size : values.list("memory-size")) {
        const QStringList pair = size.split(u':');
        const auto memory = find(pair.constFirst().toLatin1());
        const int places = pair.size() == 2 ? pair.constLast().toInt() : 0;
        if (memory == memories.end() || places < 1 || places > maxPlaces) {
            values.refuse(u"memory-size"_s);
        } else {
            memory->places = places;
        }
    }
}

void readReception(Values &values, ReceptionSettings &reception)
{
    using Ways = std::pair<bool, bool>;
    Ways ways{true, true};
    values.word<Ways>("report-ways",
                      {{"both"_L1, {true, true}},
                       {"cds"_L1, {true, false}},
                       {"cdsi"_L1, {false, true}},
                       {"none"_L1, {false, false}}},
                      ways);
    std::tie(reception.routesReports, reception.storesReports) = ways;
    readMemories(values, reception.memories);
    const auto has = [&reception](const QByteArray &name) {
        return std::any_of(reception.memories.begin(), reception.memories.end(),
                           [&name](const MemorySettings &each) { return each.name == name; });
    };
    if (!reception.memories.empty() && !has(reception.reportMemory))
        reception.reportMemory = reception.memories.front().name;
    values.name("report-memory", reception.reportMemory);
    if (!has(reception.reportMemory))
        values.refuse(u"report-memory"_s);
    values.milliseconds("ack-timeout", 1, reception.acknowledgementTimeout);
    values.milliseconds("redeliver-after", 1, reception.redeliverAfter);
}

void readIdentity(Values &values, ModemSettings &modem)
{
    values.name("manufacturer", modem.manufacturer);
    values.name("model", modem.model);
    values.digits("imei", 15, 16, modem.imei);
    values.digits("imsi", 6, 15, modem.imsi);
    values.digits("iccid", 18, 22, modem.iccid);
}

QString readValues(const QCommandLineParser &parser, SimulatorOptions &options)
{
    constexpr int maxSignal = 31;
    constexpr int unknownSignal = 99;
    ModemSettings &modem = options.modem;
    Values values(parser);
    values.digits("pin", 4, 8, modem.pin);
    values.digits("puk", 8, 8, modem.puk);
    values.milliseconds("latency", 0, modem.latency);
    values.number("baud", minBaudRate, maxBaudRate, options.line.bitsPerSecond);
    values.number("fail-every", 1, INT_MAX, modem.failEvery);
    values.number("fail-code", 0, maxErrorCode, modem.failCode);
    values.number("drop-after", 1, INT_MAX, modem.dropAfter);
    int seed = static_cast<int>(modem.seed);
    values.number("seed", 0, INT_MAX, seed);
    modem.seed = static_cast<unsigned>(seed);
    values.milliseconds("urc-interval", 1, options.line.unsolicitedInterval);
    values.word<Formats>(
        "formats",
        {{"both"_L1, Formats::Both}, {"pdu"_L1, Formats::PduOnly}, {"text"_L1, Formats::TextOnly}},
        modem.formats);
    values.number("first-reference", 0, 255, modem.firstReference);
    readReports(values, modem.reports);
    readReception(values, modem.reception);
    values.number("signal", 0, unknownSignal, modem.signal);
    if (modem.signal > maxSignal && modem.signal != unknownSignal)
        values.refuse(u"signal"_s);
    values.number("registered", 0, 5, modem.registered);
    values.number("functionality", 0, 4, modem.functionality);
    if (modem.functionality != 0 && modem.functionality != 1 && modem.functionality != 4)
        values.refuse(u"functionality"_s);
    values.milliseconds("register-after", 0, modem.registerAfter);
    readIdentity(values, modem);
    modem.refusesBareAttention = parser.isSet(u"refuse-bare-at"_s);
    modem.silent = parser.isSet(u"silent"_s);
    modem.noise = parser.isSet(u"noise"_s);
    modem.unsolicited = parser.isSet(u"urc"_s);
    modem.loseLastAnswer = parser.isSet(u"lose-answer"_s);
    return values.refusal();
}

SimulatorOptions refused(const QString &reason)
{
    SimulatorOptions options;
    options.action = SimulatorOptions::Action::Refused;
    options.refusal = reason;
    return options;
}

} // namespace

SimulatorOptions parseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        return refused(parser.errorText());
    SimulatorOptions options;
    if (parser.isSet(u"help"_s)) {
        options.action = SimulatorOptions::Action::ShowHelp;
        options.help = parser.helpText();
        return options;
    }
    if (parser.isSet(u"version"_s)) {
        options.action = SimulatorOptions::Action::ShowVersion;
        return options;
    }
    if (!parser.positionalArguments().isEmpty())
        return refused(
            u"Unexpected argument: \"%1\"."_s.arg(parser.positionalArguments().constFirst()));
    options.link = parser.value(u"link"_s);
    options.socket = parser.value(u"socket"_s);
    options.log = parser.value(u"log"_s);
    options.control = parser.value(u"control"_s);
    options.incoming = parser.value(u"incoming"_s);
    if (options.link.isEmpty() == options.socket.isEmpty() || options.log.isEmpty())
        return refused(u"--log and either --link or --socket are needed."_s);
    const QString refusal = readValues(parser, options);
    return refusal.isEmpty() ? options : refused(refusal);
}

} // namespace simulator

} // namespace norvane
