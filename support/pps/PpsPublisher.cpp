#include <oz/PpsPublisher.hpp>

#include "pps/PpsPath.hpp"
#include "pps/PpsStateFile.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>
#include <system_error>

namespace oz {

using PpsStateFile::Create;

class PpsPublisherPrivate
{
public:
    bool done(int result, const QString &detail = {})
    {
        error = result;
        errorText = detail;
        if (error && detail.isEmpty())
            errorText = QString::fromStdString(std::generic_category().message(error));
        return error == 0;
    }

    bool update(const QVariantMap &attributes, PpsMerge merge, Create create)
    {
        if (!isObject())
            return done(EINVAL, QLatin1String("'") + path + QLatin1String("' is no path of an object"));
        QString problem;
        const QByteArray text = PpsText::encode(attributes, &problem);
        if (!problem.isEmpty())
            return done(EINVAL, problem);
        return done(PpsStateFile::publish(parsed->filePath(), text, merge, create, mode));
    }

    [[nodiscard]] bool isObject() const { return parsed && !path.contains(u'?'); }

    QString path;
    std::optional<PpsPath> parsed;
    mode_t mode;
    int error = 0;
    QString errorText{};
};

PpsPublisher::PpsPublisher(const QString &path, mode_t mode)
    : d(new PpsPublisherPrivate{path, PpsPath::parse(path), mode})
{
}

PpsPublisher::~PpsPublisher() = default;

QString PpsPublisher::path() const
{
    return d->path;
}

bool PpsPublisher::publish(const QVariantMap &attributes)
{
    return d->update(attributes, PpsMerge::Keep, Create::Yes);
}

bool PpsPublisher::replace(const QVariantMap &attributes)
{
    return d->update(attributes, PpsMerge::Drop, Create::Yes);
}

bool PpsPublisher::removeAttributes(const QStringList &names)
{
    QVariantMap gone;
    for (const QString &name : names)
        gone.insert(name, QVariant());
    return d->update(gone, PpsMerge::Keep, Create::No);
}

bool PpsPublisher::remove()
{
    return d->done(d->isObject() ? PpsStateFile::remove(d->parsed->filePath()) : EINVAL);
}

int PpsPublisher::error() const
{
    return d->error;
}

QString PpsPublisher::errorString() const
{
    return d->errorText;
}

} // namespace oz
