// Feeds arbitrary bytes to everything of ozcast that reads what a display sends.

#include "RtspMessage.hpp"
#include "VideoFormats.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace oz::cast;

namespace {

void require(bool holds, const char *what, const QByteArray &data)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n%s\n", what, data.constData());
    std::abort();
}

// The messages in \a data, which comes in portions of so many bytes, each as it would be sent.
QList<QByteArray> messagesIn(const QByteArray &data, qsizetype portion, QString *problem)
{
    RtspReader reader;
    QList<QByteArray> messages;
    for (qsizetype i = 0; i < data.size(); i += portion) {
        reader.feed(data.mid(i, portion));
        while (const auto message = reader.next())
            messages.append(message->toBytes());
    }
    *problem = reader.problem();
    return messages;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const QByteArray data(reinterpret_cast<const char *>(bytes), qsizetype(size));
    QString problem;
    QString problemByByte;
    const QList<QByteArray> messages = messagesIn(data, data.size() + 1, &problem);
    require(messagesIn(data, 1, &problemByByte) == messages && problem == problemByByte,
        "a message is the same in portions of any size", data);
    for (const QByteArray &message : messages) {
        QString again;
        require(messagesIn(message, message.size(), &again) == QList<QByteArray>{message} && again.isEmpty(),
            "what is written is read", message);
    }

    const auto choice = chooseVideo(parseVideoFormats(data), {1920, 1080});
    if (choice) {
        const auto same = chooseVideo(parseVideoFormats(choice->toParameter()), {1920, 1080});
        require(
            same && same->toParameter() == choice->toParameter(), "the chosen format can be chosen", data);
        require(!choice->levelName().isEmpty(), "each level has a name", data);
    }
    (void)offersAac(data);
    return 0;
}
