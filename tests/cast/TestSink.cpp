#include "cast/TestSink.hpp"

#include <QTimer>
#include <QtEndian>

namespace oz::harness {

TestSink::TestSink(const QString &address, quint16 controlPort) : m_address(address)
{
    m_control.listen(QHostAddress(address), controlPort);
    m_rtp.bind(QHostAddress(address));
    m_rtp.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4 << 20);
    connect(&m_control, &QTcpServer::newConnection, this, [this] {
        m_controlled = m_control.nextPendingConnection();
        connect(m_controlled, &QTcpSocket::readyRead, this, &TestSink::onControl);
    });
    connect(&m_rtsp, &QTcpSocket::readyRead, this, &TestSink::onRtsp);
    connect(&m_rtsp, &QTcpSocket::connected, this,
        [this] { m_rtsp.setSocketOption(QAbstractSocket::LowDelayOption, 1); });
    connect(&m_rtp, &QUdpSocket::readyRead, this, &TestSink::onPackets);
}

void TestSink::connectToSource(quint16 port, const QString &source)
{
    m_rtsp.abort();
    m_rtsp.bind(QHostAddress(m_address));
    m_rtsp.connectToHost(QHostAddress(source), port);
}

void TestSink::onControl()
{
    const QByteArray message = m_controlled->readAll();
    if (message[3] == 2) {
        m_heard.append("STOP PROJECTION");
        return;
    }
    m_heard.append("SOURCE READY");
    // The port's field follows that of the name.
    const qsizetype port = 4 + 3 + qFromBigEndian<quint16>(message.constData() + 5);
    connectToSource(qFromBigEndian<quint16>(message.constData() + port + 3));
}

void TestSink::onRtsp()
{
    m_received += m_rtsp.readAll();
    for (qsizetype end = 0; (end = m_received.indexOf("\r\n\r\n")) >= 0;) {
        QMap<QByteArray, QByteArray> headers;
        QList<QByteArray> lines = m_received.first(end).split('\n');
        const QByteArray start = lines.takeFirst().trimmed();
        for (const QByteArray &line : lines)
            headers[line.left(line.indexOf(':')).toLower()] = line.mid(line.indexOf(':') + 1).trimmed();
        const qsizetype size = headers["content-length"].toInt();
        if (m_received.size() < end + 4 + size)
            return;
        const QByteArray body = m_received.mid(end + 4, size);
        m_received.remove(0, end + 4 + size);
        onMessage(start, headers, body);
    }
}

void TestSink::onMessage(
    const QByteArray &start, const QMap<QByteArray, QByteArray> &headers, const QByteArray &body)
{
    const QByteArray sequence = headers["cseq"];
    if (!start.startsWith("RTSP/"))
        return onRequest(start.left(start.indexOf(' ')), sequence, body);
    const QByteArray method = m_sent.take(sequence.toInt());
    m_heard.append(start.mid(9, 3) + ' ' + method);
    if (m_heard.back() == "200 SETUP") {
        m_session = headers["session"].split(';').front();
        if (!headers["transport"].contains("server_port="))
            m_packetProblem = "the answer to SETUP names no port of the source";
        request("PLAY");
    }
}

void TestSink::onRequest(const QByteArray &method, const QByteArray &sequence, const QByteArray &body)
{
    const QByteArray trigger =
        body.startsWith("wfd_trigger_method: ") ? body.mid(20).trimmed() : QByteArray();
    const bool isKeepAlive = method == "GET_PARAMETER" && body.isEmpty();
    const QString step = isKeepAlive ? "KEEP_ALIVE" : trigger.isEmpty() ? method : "TRIGGER " + trigger;
    m_heard.append(step);
    QByteArray answer;
    if (step == "GET_PARAMETER") {
        answer = "wfd_video_formats: " + formats + "\r\nwfd_audio_codecs: " + sound
            + "\r\nwfd_client_rtp_ports: RTP/AVP/UDP;unicast " + QByteArray::number(m_rtp.localPort())
            + " 0 mode=play\r\n";
    } else if (step == "SET_PARAMETER") {
        m_parameters = body;
        const qsizetype url = body.indexOf("rtsp://");
        m_url = body.mid(url, body.indexOf(' ', url) - url);
    }
    if (goesWrong(step, sequence))
        return;
    sendRaw("RTSP/1.0 200 OK\r\nCSeq: " + sequence
        + "\r\nContent-Length: " + QByteArray::number(answer.size()) + "\r\n\r\n" + answer);
    if (method == "OPTIONS")
        request("OPTIONS");
    else if (!trigger.isEmpty())
        request(trigger);
}

void TestSink::request(const QByteArray &method, const QByteArray &body, const QByteArray &session)
{
    const QByteArray sequence = QByteArray::number(++m_sequence);
    if (goesWrong("its " + method, sequence))
        return;
    m_sent[m_sequence] = method;
    QByteArray text = method + ' ' + (method == "OPTIONS" ? "*" : m_url) + " RTSP/1.0\r\nCSeq: " + sequence;
    if (method == "OPTIONS")
        text += "\r\nRequire: org.wfa.wfd1.0";
    else if (method == "SETUP")
        text += "\r\nTransport: RTP/AVP/UDP;unicast;client_port=" + QByteArray::number(m_rtp.localPort());
    else
        text += "\r\nSession: " + (session.isEmpty() ? m_session : session);
    sendRaw(text + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

bool TestSink::goesWrong(const QString &step, const QByteArray &sequence)
{
    if (!instead.contains(step))
        return false;
    if (instead[step] == Close)
        m_rtsp.disconnectFromHost();
    else
        sendRaw(QByteArray(instead[step]).replace("%1", sequence));
    return true;
}

void TestSink::sendRaw(const QByteArray &bytes)
{
    if (dribble == 0) {
        m_rtsp.write(bytes);
        return;
    }
    if (m_unsent.isEmpty()) {
        auto *timer = new QTimer(this);
        timer->callOnTimeout([this, timer] {
            m_rtsp.write(m_unsent.left(1));
            m_unsent.remove(0, 1);
            if (m_unsent.isEmpty())
                timer->deleteLater();
        });
        timer->start(dribble);
    }
    m_unsent += bytes;
}

void TestSink::onPackets()
{
    constexpr qsizetype HeaderSize = 12;
    constexpr qsizetype TransportPacket = 188;
    while (m_rtp.hasPendingDatagrams()) {
        QByteArray packet(m_rtp.pendingDatagramSize(), Qt::Uninitialized);
        m_rtp.readDatagram(packet.data(), packet.size());
        ++m_packets;
        const QByteArray content = packet.mid(HeaderSize);
        if (packet[0] != char(0x80) || (packet[1] & 0x7f) != 33 || content.size() % TransportPacket != 0
            || content.size() > 7 * TransportPacket || content[0] != 0x47)
            m_packetProblem = "no RTP packet of a transport stream: " + packet.left(16).toHex();
        m_stream += content;
    }
}

} // namespace oz::harness
