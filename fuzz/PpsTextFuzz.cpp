// Feeds arbitrary bytes to everything that reads a message. What decodes must encode again, and come back
// equal.

#include <oz/PpsText.hpp>

#include "support/pps/PpsChanges.hpp"
#include "support/pps/PpsLines.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool holds, const char *what, const QByteArray &data)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n%s\n", what, data.constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const QByteArray data(reinterpret_cast<const char *>(bytes), qsizetype(size));
    QString error;
    const QVariantMap message = oz::PpsText::decode(data, &error);
    require(error.isEmpty() != message.isEmpty(), "a message or an error, not both", data);
    if (error.isEmpty()) {
        const QVariantMap attributes = message.first().toMap();
        const QByteArray again = oz::PpsText::encode(attributes, &error);
        require(error.isEmpty(), "what decodes can be encoded", data);
        require(oz::PpsText::decode(again, &error).value(QStringLiteral("@")).toMap() == attributes
                && error.isEmpty(),
            "what is encoded decodes to the same map", again);
    }

    const qsizetype middle = data.size() / 2;
    const QByteArray before = oz::selectLines(data.first(middle), "object", {});
    const QByteArray after = oz::mergeLines(before, data.sliced(middle), "object", oz::PpsMerge::Keep);
    require(oz::mergeLines(after, data.sliced(middle), "object", oz::PpsMerge::Keep) == after,
        "publishing twice changes nothing", data);
    const QByteArray delta = oz::deltaLines(before, after);
    const QByteArray rebuilt = oz::mergeLines(before, delta, "object", oz::PpsMerge::Keep);
    require(oz::deltaLines(rebuilt, after).count('\n') <= 1, "a delta holds all that changed", data);
    return 0;
}
