#include "ControlExchange.hpp"

#include "ControlErrors.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

ControlAnswer exchange(const ControlRequest &request, const ControlTexts &texts)
{
    PpsObject control(request.path);
    if (request.setBlocking)
        control.setBlocking(true);
    if (!control.open(PpsOpenMode::PublishSubscribe)) {
        ControlErrors::noteFailure(control);
        if (texts.openFailed)
            texts.openFailed->warn(control);
        return {ControlAnswer::NotOpened, control.error(), {}};
    }
    bool ok = false;
    const QByteArray data = PpsObject::encode(request.attributes, &ok);
    if (!ok) {
        ControlErrors::noteFailure(control);
        texts.encodeFailed.warn(control);
        return {};
    }
    if (!control.write(data)) {
        ControlErrors::noteFailure(control);
        texts.writeFailed.warn(control);
        return {};
    }
    const auto message = readOrLog(&control, texts.answer);
    if (!message) {
        ControlErrors::noteFailure(control);
        return {};
    }
    ControlErrors::noteAnswer(attributesOf(*message));
    return {ControlAnswer::Answered, 0, *message};
}

} // namespace oz::device
