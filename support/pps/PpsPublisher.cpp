#include <oz/PpsPublisher.hpp>

#include "base/LastError.hpp"
#include "pps/PpsPath.hpp"
#include "pps/PpsStateFile.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>

namespace oz {

using PpsStateFile::Create;

class PpsPublisherPrivate
{
public:
    bool update(const QVariantMap &attributes, PpsMerge merge, Create create)
    {
        if (!isObject())
            return error.done(EINVAL, QLatin1String("'") + path + QLatin1String("' is no path of an object"));
        QString problem;
        const QByteArray text = PpsText::encode(attributes, &problem);
        if (!problem.isEmpty())
            return error.done(EINVAL, problem);
        return error.done(PpsStateFile::publish(parsed->filePath(), text, merge, create, mode));
    }

    [[nodiscard]] bool isObject() const { return parsed && !path.contains(u'?'); }

    QString path;
    std::optional<PpsPath> parsed;
    mode_t mode;
    LastError error{};
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
    return d->error.done(d->isObject() ? PpsStateFile::remove(d->parsed->filePath()) : EINVAL);
}

int PpsPublisher::error() const
{
    return d->error.code();
}

QString PpsPublisher::errorString() const
{
    return d->error.text();
}

} // namespace oz
