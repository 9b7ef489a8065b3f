#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

#include <optional>
#include <utility>

namespace oz::harness {

/*!
 * A wireless display on an address of this machine: it speaks what displays speak, written apart
 * from the program that it tests, and can be told to misbehave at any step.
 */
class TestSink : public QObject
{
public:
    explicit TestSink(const QString &address = QStringLiteral("127.0.0.2"), quint16 controlPort = 0);

    /*! What it sends at a step instead of what is right; %1 stands for the number of the request. The steps
     * are the methods of the source ("OPTIONS", "GET_PARAMETER", "SET_PARAMETER", "KEEP_ALIVE", "TRIGGER
     * SETUP", ...), and its own requests ("its OPTIONS", "its SETUP", "its PLAY", ...). */
    QMap<QString, QByteArray> instead;
    /*! With these as what it sends, it stalls or closes the connection. */
    static constexpr const char *Stall = "";
    static constexpr const char *Close = "close";
    /*! Milliseconds between the bytes that it sends; 0 for all at once. */
    int dribble = 0;
    QByteArray formats = "00 00 01 01 000000a0 00000000 00000000 00 0000 0000 00 none none";
    QByteArray sound = "LPCM 00000003 00, AAC 00000001 00";

    [[nodiscard]] QString address() const { return m_address; }
    [[nodiscard]] quint16 controlPort() const { return m_control.serverPort(); }
    /*! Connects without being asked to, as on the air. */
    void connectToSource(quint16 port, const QString &source = QStringLiteral("127.0.0.1"));
    void request(const QByteArray &method, const QByteArray &body = {}, const QByteArray &session = {});
    void sendRaw(const QByteArray &bytes);

    [[nodiscard]] qsizetype packets() const { return m_packets; }
    [[nodiscard]] qsizetype keyFrames() const { return m_stream.count(QByteArray("\0\0\1\x65", 4)); }
    [[nodiscard]] const QByteArray &stream() const { return m_stream; }
    /*! The first wrong packet, in words. */
    [[nodiscard]] const QString &packetProblem() const { return m_packetProblem; }
    /*! The parameters that the source has set (M4). */
    [[nodiscard]] const QByteArray &parameters() const { return m_parameters; }
    /*! What it has received, in this order: "OPTIONS", "TRIGGER SETUP", "200 PLAY", "STOP PROJECTION". */
    [[nodiscard]] const QStringList &heard() const { return m_heard; }
    [[nodiscard]] bool isConnected() const { return m_rtsp.state() == QAbstractSocket::ConnectedState; }

private:
    void onControl();
    void onRtsp();
    void onMessage(
        const QByteArray &start, const QMap<QByteArray, QByteArray> &headers, const QByteArray &body);
    void onRequest(const QByteArray &method, const QByteArray &sequence, const QByteArray &body);
    void onPackets();
    // True if that is all, because the step goes wrong.
    bool goesWrong(const QString &step, const QByteArray &sequence);

    const QString m_address;
    QTcpServer m_control;
    QTcpSocket *m_controlled = nullptr;
    QTcpSocket m_rtsp;
    QUdpSocket m_rtp;
    QByteArray m_received;
    QByteArray m_unsent;
    QByteArray m_session;
    QByteArray m_url;
    QByteArray m_parameters;
    QMap<int, QByteArray> m_sent;
    int m_sequence = 100;
    QStringList m_heard;
    QByteArray m_stream; // the transport stream
    qsizetype m_packets = 0;
    QString m_packetProblem;
};

} // namespace oz::harness
