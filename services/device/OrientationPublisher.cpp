#include "device/OrientationPublisher.hpp"

#include "publishing/ServedObject.hpp"

namespace oz::services {

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
    // Their presence is all that they say.
    void onMessage(const PpsServer::Client &, const QVariantMap &, const QString &) override { }

    int m_count = 0;
};

OrientationPublisher::OrientationPublisher(const QString &facility, OrientationSource &source, Tree &tree)
    : FieldsPublisher(facility, source, tree, {&orientationFields()}, Unfollowed()),
      m_readers(std::make_unique<Readers>(tree, source))
{
    m_readers->start(0666); // before there is something to read
    follow();
}

OrientationPublisher::~OrientationPublisher() = default;

} // namespace oz::services
