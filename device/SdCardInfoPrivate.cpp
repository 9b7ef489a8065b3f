#include "SdCardInfoPrivate.hpp"

#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

namespace {

using State = SdCardInfoPrivate::State;

const QString PpsPath = QStringLiteral("/pps/system/filesystem/removable/sdcard?f=mounted+busy");

constexpr LogText OpenFailed{"SdCardInfo failed to open pps, error", LogText::ErrorCode};
constexpr ReadTexts Reading{{"SdCardInfo failed to read pps data, error", LogText::ErrorCode},
    {"SdCardInfo failed to parse pps data."}};

using Changes =
    ChangeTable<Change<Fields<&State::state>, qOverload<SdCardState::Type>(&SdCardInfo::stateChanged),
                    qOverload<int>(&SdCardInfo::stateChanged)>,
        Change<Fields<&State::activity>, qOverload<SdCardActivity::Type>(&SdCardInfo::activityChanged),
            qOverload<int>(&SdCardInfo::activityChanged)>>;

} // namespace

SdCardInfoPrivate::SdCardInfoPrivate(SdCardInfo *publicObject) : QObject(publicObject), q(publicObject)
{
    auto *pps = new PpsObject(PpsPath, this);
    connect(pps, &PpsObject::readyRead, this, &SdCardInfoPrivate::onReadyRead);
    if (openOrLog(pps, PpsOpenMode::Subscribe, OpenFailed))
        update(pps, false);
}

void SdCardInfoPrivate::onReadyRead()
{
    auto *pps = qobject_cast<PpsObject *>(sender());
    if (!pps) {
        qCWarning(logDevice) << "SdCardinfo internal error: unexpected sender.";
        return;
    }
    update(pps, true);
}

void SdCardInfoPrivate::update(PpsObject *pps, bool emitSignals)
{
    const auto message = readOrLog(pps, Reading);
    if (!message)
        return;
    const QVariantMap card = attributesOf(*message, QStringLiteral("@sdcard"));
    const State fresh{
        .state =
            card.value(QStringLiteral("mounted")).toBool() ? SdCardState::Mounted : SdCardState::Unmounted,
        .activity = card.value(QStringLiteral("busy")).toBool() ? SdCardActivity::Busy : SdCardActivity::Idle,
    };
    if (emitSignals)
        Changes::storeAndEmit(q, &m_state, fresh);
    else
        m_state.begin(fresh);
}

} // namespace oz::device
