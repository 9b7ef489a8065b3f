#include "ControlExchange.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

ControlAnswer exchange(const ControlRequest &request, const ControlTexts &texts)
{
    PpsObject control(request.path);
    if (request.setBlocking)
        control.setBlocking(true);
    if (!control.open(PpsOpenMode::PublishSubscribe)) {
        if (texts.openFailed)
            texts.openFailed->warn(control);
        return {ControlAnswer::NotOpened, control.error(), {}};
    }
    bool ok = false;
    const QByteArray data = PpsObject::encode(request.attributes, &ok);
    if (!ok) {
        texts.encodeFailed.warn(control);
        return {};
    }
    if (!control.write(data)) {
        texts.writeFailed.warn(control);
        return {};
    }
    const auto message = readOrLog(&control, texts.answer);
    if (!message)
        return {};
    return {ControlAnswer::Answered, 0, *message};
}

} // namespace oz::device
