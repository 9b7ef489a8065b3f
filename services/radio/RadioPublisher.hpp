#pragma once

#include "publishing/FieldsPublisher.hpp"
#include "radio/Radio.hpp"

namespace oz::services {

/*! Publishes what the radio does, beside the connection service's status, which its clients read too. */
class RadioPublisher final : public FieldsPublisher<RadioSource>
{
public:
    RadioPublisher(const QString &facility, RadioSource &source, Tree &tree);

private:
    StatePublisher m_connections;
};

} // namespace oz::services
