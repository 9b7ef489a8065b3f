#include "DisplayControl.hpp"

#include <QStringEncoder>
#include <QtEndian>

namespace oz::cast {

namespace {

// A message: its whole size in 16 bits, the version, the command, then fields of type, size in 16 bits, and
// value.
constexpr qsizetype HeaderSize = 4;
constexpr char MiceVersion = 1;
constexpr qsizetype MaxNameSize = 520;
enum Field : char { NameField = 0, PortField = 2, IdentifierField = 3 };

QByteArray bigEndian(qsizetype number)
{
    QByteArray bytes(2, Qt::Uninitialized);
    qToBigEndian(quint16(number), bytes.data());
    return bytes;
}

QByteArray field(Field type, const QByteArray &value)
{
    return char(type) + bigEndian(value.size()) + value;
}

} // namespace

DisplayControl::DisplayControl(const QHostAddress &display, quint16 port, const Source &source)
    : m_source(source)
{
    m_socket.setReadBufferSize(64 * 1024);
    connect(&m_socket, &QTcpSocket::connected, this, [this] {
        m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_socket.write(messageOf(Command::SourceReady, m_source));
        m_isAsked = true;
        Q_EMIT asked();
    });
    connect(&m_socket, &QTcpSocket::readyRead, this, &DisplayControl::receive);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, [this] {
        // Some displays close it once they have been asked.
        if (!m_isAsked)
            Q_EMIT unreachable(m_socket.errorString());
    });
    m_socket.connectToHost(display, port);
}

void DisplayControl::stopProjection()
{
    m_socket.disconnect(this);
    if (m_socket.state() != QAbstractSocket::ConnectedState)
        return;
    m_socket.write(messageOf(Command::StopProjection, m_source));
    m_socket.flush();
    m_socket.disconnectFromHost();
}

QByteArray DisplayControl::messageOf(Command command, const Source &source)
{
    QByteArray name = QStringEncoder(QStringEncoder::Utf16LE).encode(source.name);
    name.truncate(MaxNameSize);
    QByteArray fields = field(NameField, name);
    if (command == Command::SourceReady)
        fields += field(PortField, bigEndian(source.rtspPort));
    fields += field(IdentifierField, source.identifier);
    return bigEndian(HeaderSize + fields.size()) + MiceVersion + char(command) + fields;
}

// A stranger's message counts by its command alone.
void DisplayControl::receive()
{
    m_received += m_socket.readAll();
    while (m_received.size() >= HeaderSize) {
        const qsizetype size = qFromBigEndian<quint16>(m_received.constData());
        if (size < HeaderSize) {
            m_socket.abort(); // nothing after it can be found
            return;
        }
        if (m_received.size() < size)
            return;
        const auto command = Command(m_received[3]);
        m_received.remove(0, size);
        if (command == Command::StopProjection) {
            Q_EMIT stopped();
            return;
        }
    }
}

} // namespace oz::cast
