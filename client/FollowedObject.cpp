#include <oz/client/FollowedObject.hpp>

#include <utility>

namespace oz::client {

namespace {

constexpr std::chrono::seconds OpenEvery{2}; // an object that is not there yet

} // namespace

FollowedObject::FollowedObject(
    const QString &path, std::function<void(const QVariantMap &attributes)> changed)
    : m_object(path), m_changed(std::move(changed))
{
    QObject::connect(&m_object, &PpsObject::readyRead, &m_object, [this] { read(); });
    m_again.callOnTimeout([this] { open(); });
    m_again.setSingleShot(true);
    open();
}

// The state at the time of opening is announced from the event loop.
void FollowedObject::open()
{
    if (!m_object.open(PpsOpenMode::Subscribe))
        m_again.start(OpenEvery);
}

void FollowedObject::read()
{
    const QVariantMap objects = PpsObject::decode(m_object.read());
    const QVariantMap attributes = objects.isEmpty() ? QVariantMap() : objects.first().toMap();
    if (std::exchange(m_attributes, attributes) != attributes)
        m_changed(attributes);
}

} // namespace oz::client
