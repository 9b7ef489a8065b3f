#include "services/AtModem.hpp"

#include <QHash>

#include <utility>

namespace oz::harness {

namespace {

// These answers never change.
const QHash<QByteArray, QByteArray> &fixedAnswers()
{
    static const QHash<QByteArray, QByteArray> answers{
        {"+GCAP", "+GCAP: +CGSM"}, {"+CGMI", "Acme"}, {"+CGMM", "Phone"}, {"+CGMR", "1.0"},
        {"+CFUN?", "+CFUN: 1"}, {"+WS46=?", "+WS46: (12,22,25,28,29,30,31)"}, {"+WS46?", "+WS46: 31"},
        {"+CSCS=?", R"(+CSCS: ("GSM","IRA","UCS2"))"}, {"+CSCS?", R"(+CSCS: "IRA")"},
        {"+CREG=?", "+CREG: (0-2)"}, {"+CGREG=?", "+CGREG: (0-2)"}, {"+CEREG=?", "+CEREG: (0-2)"},
        {"+CLCK=?", R"(+CLCK: ("SC"))"}, {"+CLCK=\"SC\",2", "+CLCK: 1"},
        {"+CIND=?", R"(+CIND: ("battchg",(0-5)),("signal",(0-5)),("service",(0-1)),("roam",(0-1)))"},
        {"+CMER=?", "+CMER: (0-3),(0),(0),(0-1),(0)"}, {"+CGEREP=?", "+CGEREP: (0-2),(0,1)"},
        {"+CTZU=?", "+CTZU: (0,1)"}, // an empty answer ends ModemManager 1.20
        {"#QSS=?", "#QSS: (0-2)"}, {"+CTZU?", "+CTZU: 0"}, {"+CGATT?", "+CGATT: 1"},
        {"+CNUM", "+CNUM: ,\"+15551234\",145"},
        {"+CGDCONT?", R"(+CGDCONT: 1,"IP","internet.example","",0,0)"}, {"+CGACT?", "+CGACT: 1,0"},
        {"+CGDCONT=?", "+CGDCONT: (1-16),\"IP\",,,(0-2),(0-4)"},
        {"+CRSM=176,12258,0,0,10", R"(+CRSM: 144,0,"98941000000000000010")"}, // the card's number, by pairs
        {"+CRSM=176,28589,0,0,4", R"(+CRSM: 144,0,"00000002")"}, // the length of the network's code
    };
    return answers;
}

// Commands that only set something up.
bool isSetting(const QByteArray &command)
{
    for (const char *name : {"E0", "V1", "X4", "&C1", "Z",
             "+CMEE=", "+CREG=", "+CGREG=", "+CEREG=", "+CSCS=", "+CMER=", "+CGEREP=", "+CTZU=", "+CTZR=",
             "+CFUN=", "+COPS=", "#QSS=", "+CGDCONT=", "+CGACT=", "+CRC=", "+CLIP=", "+CCWA=", "+CUSD="}) {
        if (command.startsWith(name))
            return true;
    }
    return command.isEmpty();
}

const QByteArray Ok = "\r\nOK\r\n";

QByteArray reply(const QByteArray &text)
{
    return "\r\n" + text + "\r\n" + Ok;
}

} // namespace

AtModem::AtModem(const QString &name) : m_name(name)
{
    for (const QString &port : ports()) {
        auto server = std::make_unique<QLocalServer>();
        server->setSocketOptions(QLocalServer::AbstractNamespaceOption);
        if (!server->listen(port))
            qFatal("%s: %s", qPrintable(port), qPrintable(server->errorString()));
        QObject::connect(server.get(), &QLocalServer::newConnection, server.get(),
            [this, port = server.get()] { onConnected(port); });
        m_ports.push_back(std::move(server));
    }
}

QStringList AtModem::ports() const
{
    return {"abstract:" + m_name + "0", "abstract:" + m_name + "1"};
}

void AtModem::onConnected(QLocalServer *port)
{
    QLocalSocket *socket = port->nextPendingConnection();
    m_connections.append(socket);
    QObject::connect(socket, &QLocalSocket::disconnected, socket, [this, socket] {
        m_connections.removeAll(socket);
        socket->deleteLater();
    });
    QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket, line = QByteArray()]() mutable {
        line += socket->readAll();
        for (qsizetype end = line.indexOf('\r'); end >= 0; end = line.indexOf('\r')) {
            const QByteArray command = line.first(end).trimmed();
            line.remove(0, end + 1);
            if (command.startsWith("AT"))
                socket->write(answer(command.mid(2)));
        }
    });
}

QByteArray AtModem::answer(const QByteArray &command)
{
    const bool isLocked = !pin.isEmpty() || !puk.isEmpty();
    if (!m_hasCard
        && (command.startsWith("+CPIN") || command.startsWith("+CSIM") || command.startsWith("+CRSM")
            || command == "+CIMI"))
        return "\r\n+CME ERROR: 10\r\n"; // the card is not inserted
    if (command == "#QSS?")
        return reply("#QSS: 1," + QByteArray::number(int(m_hasCard)));
    if (command == "+CPIN?")
        return reply("+CPIN: " + QByteArray(!puk.isEmpty() ? "SIM PUK" : isLocked ? "SIM PIN" : "READY"));
    if (command.startsWith("+CPIN="))
        return enterPin(command.mid(6));
    // How many tries are left, as a card says it that is given no PIN.
    if (command.startsWith("+CSIM=10,\"0020"))
        return reply("+CSIM: 4,\"63C" + QByteArray::number(tries) + '"');
    if (command.startsWith("+CSIM=10,\"002C"))
        return reply("+CSIM: 4,\"63CA\"");
    if (command == "+CIMI")
        return isLocked ? "\r\n+CME ERROR: 11\r\n" : reply(subscriber);
    if (command == "+CGSN")
        return reply(imei);
    if (command == "+CSQ")
        return reply("+CSQ: " + QByteArray::number(m_signal * 31 / 5) + ",99");
    if (command == "+CIND?")
        return reply("+CIND: 5," + QByteArray::number(m_signal) + ",1,0");
    if (command == "+CREG?" || command == "+CGREG?" || command == "+CEREG?")
        return reply(registration(command.chopped(1), true));
    if (command.startsWith("+COPS=3,"))
        m_namesByCode = command.startsWith("+COPS=3,2");
    if (command.endsWith("+COPS?")) {
        return reply("+COPS: 0," + QByteArray(m_namesByCode ? "2" : "0") + ",\""
            + (m_namesByCode ? m_operatorCode : m_operator) + "\"," + QByteArray::number(m_technology));
    }
    if (command.startsWith("D*99")) // from here on the port carries data
        return admitsData ? "\r\nCONNECT\r\n" : "\r\nNO CARRIER\r\n";
    if (const auto fixed = fixedAnswers().find(command); fixed != fixedAnswers().end())
        return reply(*fixed);
    if (isSetting(command))
        return Ok;
    m_unknown.append(command);
    return "\r\nERROR\r\n";
}

QByteArray AtModem::registration(const QByteArray &name, bool asked) const
{
    const bool isPlaced = m_registration == Home || m_registration == Roaming;
    return name + ": " + (asked ? "2," : "") + QByteArray::number(m_registration)
        + (isPlaced ? ",\"00C3\",\"0000A21F\"," + QByteArray::number(m_technology) : QByteArray());
}

QByteArray AtModem::enterPin(const QByteArray &pins)
{
    const QByteArrayList given = QByteArray(pins).replace('"', "").split(',');
    if (!puk.isEmpty() && given.value(0) == puk) {
        puk.clear();
        pin.clear();
        tries = 3;
        return Ok;
    }
    if (puk.isEmpty() && given.value(0) == pin) {
        pin.clear();
        tries = 3;
        return Ok;
    }
    if (--tries == 0)
        puk = "12345678";
    return "\r\n+CME ERROR: 16\r\n"; // incorrect password
}

void AtModem::tell(const QByteArray &text)
{
    // The first port is the one that ModemManager listens to.
    for (QLocalSocket *connection : std::as_const(m_connections))
        connection->write("\r\n" + text + "\r\n");
}

void AtModem::registerIn(Registration registered, Technology technology)
{
    m_registration = registered;
    m_technology = technology;
    for (const char *name : {"+CREG", "+CGREG", "+CEREG"})
        tell(registration(name, false));
}

void AtModem::nameNetwork(const QByteArray &name, const QByteArray &code)
{
    m_operator = name;
    m_operatorCode = code;
}

void AtModem::insertCard(bool inserted)
{
    m_hasCard = inserted;
    tell("#QSS: " + QByteArray::number(int(inserted)));
}

void AtModem::setSignal(int fifths)
{
    m_signal = fifths;
    tell("+CIEV: 2," + QByteArray::number(fifths));
}

} // namespace oz::harness
