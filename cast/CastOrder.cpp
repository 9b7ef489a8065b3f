#include "CastOrder.hpp"

namespace oz::cast {

namespace {

const QString Id = QStringLiteral("id");
const QString Address = QStringLiteral("address");
const QString ControlPort = QStringLiteral("control-port");
const QString Port = QStringLiteral("port");
const QString FriendlyName = QStringLiteral("friendly-name");
const QString Identifier = QStringLiteral("identifier");
const QString PictureName = QStringLiteral("picture");
const QString ConnectLimit = QStringLiteral("connect-limit-ms");
// Between the two processes of this program alone.
const QString StepLimit = QStringLiteral("step-limit-ms");
const QString KeepAlive = QStringLiteral("keep-alive-ms");
const QString Video = QStringLiteral("video-encoder");
const QString Audio = QStringLiteral("audio-encoder");

constexpr qsizetype IdentifierSize = 16;

// In the order of the enumerators.
const QStringList PictureNames{
    QStringLiteral("screen"), QStringLiteral("further-output"), QStringLiteral("test-card")};

Picture pictureOf(const QString &name, Picture fallback)
{
    const qsizetype index = PictureNames.indexOf(name);
    return index < 0 ? fallback : Picture(index);
}

quint16 portOf(const QJsonValue &value, quint16 fallback)
{
    const int port = value.toInt(fallback);
    return port >= 0 && port <= 0xffff ? quint16(port) : quint16(0);
}

std::chrono::milliseconds timeOf(const QJsonValue &value, std::chrono::milliseconds fallback)
{
    return std::chrono::milliseconds(value.toInt(int(fallback.count())));
}

} // namespace

CastOrder CastOrder::fromJson(const QJsonObject &json, const CastOrder &fallback)
{
    CastOrder order = fallback;
    order.id = json[Id].toInt(fallback.id);
    if (json.contains(Address))
        order.display = QHostAddress(json[Address].toString());
    order.controlPort = portOf(json[ControlPort], fallback.controlPort);
    order.source.rtspPort = portOf(json[Port], fallback.source.rtspPort);
    order.source.name = json[FriendlyName].toString(fallback.source.name);
    if (json.contains(Identifier))
        order.source.identifier = QByteArray::fromHex(json[Identifier].toString().toLatin1());
    order.limits.connect = timeOf(json[ConnectLimit], fallback.limits.connect);
    order.limits.step = timeOf(json[StepLimit], fallback.limits.step);
    order.limits.keepAlive = timeOf(json[KeepAlive], fallback.limits.keepAlive);
    order.picture = pictureOf(json[PictureName].toString(), fallback.picture);
    order.videoEncoder = json[Video].toString(fallback.videoEncoder);
    order.audioEncoder = json[Audio].toString(fallback.audioEncoder);
    return order;
}

QJsonObject CastOrder::toJson() const
{
    return {{Id, id}, {Address, display.toString()}, {ControlPort, controlPort}, {Port, source.rtspPort},
        {FriendlyName, source.name}, {Identifier, QString::fromLatin1(source.identifier.toHex())},
        {ConnectLimit, int(limits.connect.count())}, {StepLimit, int(limits.step.count())},
        {KeepAlive, int(limits.keepAlive.count())}, {PictureName, PictureNames[int(picture)]},
        {Video, videoEncoder}, {Audio, audioEncoder}};
}

QString CastOrder::problem() const
{
    if (display.isNull())
        return QStringLiteral("the display has no address");
    if (source.rtspPort == 0)
        return QStringLiteral("no port is named on which the display can connect");
    if (source.identifier.size() != IdentifierSize)
        return QStringLiteral("the source's identifier is not 32 hexadecimal digits");
    if (limits.connect.count() <= 0)
        return QStringLiteral("the time limit for the display's connection is not positive");
    return {};
}

} // namespace oz::cast
