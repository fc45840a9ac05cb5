#include "gsm-simulator/SimulatorOptions.h"

#include <QCommandLineParser>

#include <algorithm>
#include <climits>

namespace simulator {

namespace {

constexpr int SlowestLine = 50;
constexpr int FastestLine = 4'000'000;
constexpr int LongestLatency = 3'600'000;
constexpr int LargestErrorCode = 65535;

struct OptionText
{
    const char *name;
    const char *value; ///< null: the option takes none
    const char *text;
};

constexpr OptionText Options[] = {
    {"link", "path", "make this symbolic link to the modem's port"},
    {"log", "file", "append a line of JSON to this file for each part that is accepted"},
    {"pin", "code", "the SIM asks for this PIN (three tries)"},
    {"puk", "code", "what unblocks the SIM afterwards (12345678)"},
    {"latency", "ms", "answer a submission after so many milliseconds"},
    {"baud", "n", "pace the line to so many bits a second, 8N1"},
    {"fail-every", "n", "refuse every nth submission"},
    {"fail-code", "c", "with +CMS ERROR: c (38)"},
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
    parser.setApplicationDescription(QStringLiteral("A simulated GSM modem on a pseudo-terminal."));
    for (const OptionText &option : Options) {
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

    void number(const char *name, int least, int most, int &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        bool isNumber = false;
        const int given = m_parser.value(option).toInt(&isNumber);
        if (!isNumber || given < least || given > most) {
            refuse(option);
        } else {
            value = given;
        }
    }

    void milliseconds(const char *name, int least, std::chrono::milliseconds &value)
    {
        auto count = static_cast<int>(value.count());
        number(name, least, LongestLatency, count);
        value = std::chrono::milliseconds(count);
    }

    void digits(const char *name, qsizetype least, qsizetype most, QByteArray &value)
    {
        const QString option = QString::fromLatin1(name);
        if (!m_parser.isSet(option))
            return;
        const QByteArray given = m_parser.value(option).toLatin1();
        const bool onlyDigits =
            std::all_of(given.begin(), given.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (!onlyDigits || given.size() < least || given.size() > most) {
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

    void formats(Formats &value)
    {
        const QString given = m_parser.value(QStringLiteral("formats"));
        if (given == QLatin1String("pdu")) {
            value = Formats::PduOnly;
        } else if (given == QLatin1String("text")) {
            value = Formats::TextOnly;
        } else if (m_parser.isSet(QStringLiteral("formats")) && given != QLatin1String("both")) {
            refuse(QStringLiteral("formats"));
        }
    }

    void refuse(const QString &option)
    {
        if (m_refusal.isEmpty())
            m_refusal =
                QStringLiteral("Bad value for --%1: \"%2\".").arg(option, m_parser.value(option));
    }

private:
    const QCommandLineParser &m_parser;
    QString m_refusal;
};

QString readValues(const QCommandLineParser &parser, SimulatorOptions &options)
{
    constexpr int MostSignal = 31;
    constexpr int UnknownSignal = 99;
    ModemSettings &modem = options.modem;
    Values values(parser);
    values.digits("pin", 4, 8, modem.pin);
    values.digits("puk", 8, 8, modem.puk);
    values.milliseconds("latency", 0, modem.latency);
    values.number("baud", SlowestLine, FastestLine, options.line.bitsPerSecond);
    values.number("fail-every", 1, INT_MAX, modem.failEvery);
    values.number("fail-code", 0, LargestErrorCode, modem.failCode);
    values.number("drop-after", 1, INT_MAX, modem.dropAfter);
    int seed = static_cast<int>(modem.seed);
    values.number("seed", 0, INT_MAX, seed);
    modem.seed = static_cast<unsigned>(seed);
    values.milliseconds("urc-interval", 1, options.line.unsolicitedInterval);
    values.formats(modem.formats);
    values.number("signal", 0, UnknownSignal, modem.signal);
    if (modem.signal > MostSignal && modem.signal != UnknownSignal)
        values.refuse(QStringLiteral("signal"));
    values.number("registered", 0, 5, modem.registered);
    values.number("functionality", 0, 4, modem.functionality);
    if (modem.functionality != 0 && modem.functionality != 1 && modem.functionality != 4)
        values.refuse(QStringLiteral("functionality"));
    values.milliseconds("register-after", 0, modem.registerAfter);
    values.name("manufacturer", modem.manufacturer);
    values.name("model", modem.model);
    values.digits("imei", 15, 16, modem.imei);
    values.digits("imsi", 6, 15, modem.imsi);
    values.digits("iccid", 18, 22, modem.iccid);
    modem.refusesBareAttention = parser.isSet(QStringLiteral("refuse-bare-at"));
    modem.silent = parser.isSet(QStringLiteral("silent"));
    modem.noise = parser.isSet(QStringLiteral("noise"));
    modem.unsolicited = parser.isSet(QStringLiteral("urc"));
    modem.loseLastAnswer = parser.isSet(QStringLiteral("lose-answer"));
    return values.refusal();
}

SimulatorOptions refused(const QString &reason)
{
    SimulatorOptions options;
    options.wish = SimulatorOptions::Wish::Refused;
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
    if (parser.isSet(QStringLiteral("help"))) {
        options.wish = SimulatorOptions::Wish::ShowHelp;
        options.help = parser.helpText();
        return options;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        options.wish = SimulatorOptions::Wish::ShowVersion;
        return options;
    }
    if (!parser.positionalArguments().isEmpty())
        return refused(QStringLiteral("Unexpected argument: \"%1\".")
                           .arg(parser.positionalArguments().constFirst()));
    options.link = parser.value(QStringLiteral("link"));
    options.log = parser.value(QStringLiteral("log"));
    if (options.link.isEmpty() || options.log.isEmpty())
        return refused(QStringLiteral("Both --link and --log are needed."));
    const QString refusal = readValues(parser, options);
    return refusal.isEmpty() ? options : refused(refusal);
}

} // namespace simulator
