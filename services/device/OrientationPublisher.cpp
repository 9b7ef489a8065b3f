#include "device/OrientationPublisher.hpp"

#include "publishing/ServedObject.hpp"

namespace oz::services {

namespace {
// In the order of Orientation.
constexpr const char *Texts[] = {
    "top-up", "bottom-up", "left-up", "right-up", "face-up", "face-down", "undefined"};
} // namespace

class OrientationPublisher::Readers final : public ServedObject
{
public:
    Readers(Tree &tree, OrientationSource &source)
        : ServedObject(tree, QStringLiteral("/pps/services/sensors/orientation-readers"))
    {
        connect(this, &ServedObject::clientCame, &source, [this, &source] { source.setRead(++m_count > 0); });
        connect(this, &ServedObject::clientGone, &source, [this, &source] { source.setRead(--m_count > 0); });
    }

private:
    // That they are there is all they have to say.
    void onMessage(const PpsServer::Client &, const QVariantMap &, const QString &) override { }

    int m_count = 0;
};

OrientationPublisher::OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree)
    : PublisherOf(facility, source, tree),
      m_sensor(tree, QStringLiteral("/pps/services/sensors/orientation")),
      m_readers(std::make_unique<Readers>(tree, source))
{
    declare(m_sensor);
    m_readers->start(0666); // before there is something to read
    follow();
}

OrientationPublisher::~OrientationPublisher() = default;

void OrientationPublisher::publishState(const OrientationState &state)
{
    QVariantMap attributes;
    if (state.orientation)
        attributes.insert(QStringLiteral("orientation"), QLatin1String(Texts[int(*state.orientation)]));
    m_sensor.publish(attributes);
}

} // namespace oz::services
