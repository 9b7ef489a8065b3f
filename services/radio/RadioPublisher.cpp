#include "radio/RadioPublisher.hpp"

namespace oz::services {

RadioPublisher::RadioPublisher(const QString &facility, RadioSource &source, Tree &tree)
    : FieldsPublisher(facility, source, tree, {&radioFields(), &radioChoiceFields()}, Unfollowed()),
      m_connections(tree, QStringLiteral("/pps/services/cds/cnice/status"))
{
    m_connections.stand();
    follow();
}

} // namespace oz::services
