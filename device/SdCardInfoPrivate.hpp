#pragma once

#include "ChangeTable.hpp"

#include <oz/device/SdCardInfo.hpp>

namespace oz {
class PpsObject;
}

namespace oz::device {

class SdCardInfoPrivate : public QObject
{
    Q_OBJECT

public:
    struct State
    {
        SdCardState::Type state = SdCardState::Unknown;
        SdCardActivity::Type activity = SdCardActivity::Unknown;
    };

    explicit SdCardInfoPrivate(SdCardInfo *q);

    void update(oz::PpsObject *pps, bool emitSignals);
    [[nodiscard]] SdCardState::Type state() const { return m_state->state; }
    [[nodiscard]] SdCardActivity::Type activity() const { return m_state->activity; }

private Q_SLOTS:
    void onReadyRead();

private:
    SdCardInfo *q;
    Announced<State> m_state;
};

} // namespace oz::device
