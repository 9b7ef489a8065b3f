#include "InvalidArgument.hpp"

#include <QLoggingCategory>

#include <cerrno>

namespace oz::models {

namespace {

Q_LOGGING_CATEGORY(logModels, "oz.models")

} // namespace

QFuture<RequestResult> refuse(const InvalidArgument &argument)
{
    const QString text = QStringLiteral("%1: %2 is %3, expected %4")
                             .arg(QLatin1String(argument.call), QLatin1String(argument.name), argument.found,
                                 QLatin1String(argument.expected));
    qCWarning(logModels).noquote() << text;
    return QtFuture::makeReadyFuture(
        RequestResult{false, 0, QStringLiteral("InvalidArgument"), {}, EINVAL, text});
}

} // namespace oz::models
