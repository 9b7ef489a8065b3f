#include <oz/PpsPublisher.hpp>

#include "base/LastError.hpp"
#include "pps/PpsPath.hpp"
#include "pps/PpsStateWriter.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>

namespace oz {

using Create = PpsStateWriter::Create;

class PpsPublisherPrivate
{
public:
    PpsPublisherPrivate(const QString &objectPath, mode_t objectMode)
        : path(objectPath), parsed(PpsPath::parse(objectPath)),
          writer(parsed ? parsed->filePath() : QByteArray()), mode(objectMode)
    {
    }

    bool update(const QVariantMap &attributes, PpsMerge merge, Create create)
    {
        if (!isObject())
            return error.done(EINVAL, QLatin1String("'") + path + QLatin1String("' is no path of an object"));
        QString problem;
        const QByteArray text = PpsText::encode(attributes, &problem);
        if (!problem.isEmpty())
            return error.done(EINVAL, problem);
        return done(writer.publish(text, merge, create, mode));
    }

    bool done(int result) { return error.done(result, writer.problem()); }

    [[nodiscard]] bool isObject() const { return parsed && !path.contains(u'?'); }

    QString path;
    std::optional<PpsPath> parsed;
    PpsStateWriter writer;
    mode_t mode;
    LastError error;
};

PpsPublisher::PpsPublisher(const QString &path, mode_t mode)
    : d(std::make_unique<PpsPublisherPrivate>(path, mode))
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
    return d->isObject() ? d->done(d->writer.remove()) : d->error.done(EINVAL);
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
