#include "table/AskedRequest.hpp"

namespace oz::services {

AskedRequest AskedRequest::named(
    const char *name, const QString &path, const char *message, const char *help, const QList<Part> &parts)
{
    AskedRequest request{QString::fromLatin1(name), parts, QString::fromUtf8(help), {}};
    request.read = [path, message = QString::fromLatin1(message), parts](
                       const QString &asked, const QVariantMap &attributes) -> QVariant {
        if (asked != path || attributes.value(QStringLiteral("msg")) != message)
            return {};
        const QVariantMap data = attributes.value(QStringLiteral("dat")).toMap();
        QVariantMap values;
        for (const Part &part : parts) {
            const QString member = part.member.isEmpty() ? part.name : part.member;
            if (data.contains(member))
                values.insert(part.name, data.value(member));
        }
        return values;
    };
    return request;
}

} // namespace oz::services
