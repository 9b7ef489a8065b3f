#include "publishing/StateStore.hpp"

#include "publishing/Log.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/TreeFiles.hpp>

#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>

namespace oz::services {

namespace {
const QString Suffix = QStringLiteral(".json");
} // namespace

QString StateStore::fileOf(const QString &name) const
{
    return m_folder + u'/' + name + Suffix;
}

QString StateStore::placeOf(const QString &name) const
{
    return m_folder.isEmpty() ? name : devicePath(fileOf(name));
}

QVariantMap StateStore::load(const QString &name) const
{
    QByteArray content = m_saved.value(name);
    const int error = m_folder.isEmpty() ? 0 : TreeFiles::read(fileOf(name), &content);
    if (error == ENOENT || (error == 0 && m_folder.isEmpty() && content.isEmpty()))
        return {};
    QJsonParseError problem{};
    const QJsonDocument document = QJsonDocument::fromJson(content, &problem);
    if (error == 0 && document.isObject())
        return document.object().toVariantMap();
    QString reason = problem.errorString();
    if (error)
        reason = qt_error_string(error);
    else if (problem.error == QJsonParseError::NoError)
        reason = QStringLiteral("it holds no object");
    qCWarning(logServices).noquote() << placeOf(name) + QLatin1String(" is ignored: ") + reason;
    return {};
}

void StateStore::save(const QString &name, const QVariantMap &state)
{
    const QByteArray content =
        QJsonDocument(QJsonObject::fromVariantMap(state)).toJson(QJsonDocument::Compact);
    QByteArray &saved = m_saved[name];
    if (saved == content)
        return;
    const int error = m_folder.isEmpty() ? 0 : TreeFiles::replace(fileOf(name), content);
    if (error == 0)
        saved = content;
    m_warn(error ? QLatin1String("the state of the services cannot be saved in ") + devicePath(m_folder)
                + QLatin1String(": ") + qt_error_string(error)
                 : QString());
}

void StateStore::clear()
{
    m_saved.clear();
    if (m_folder.isEmpty())
        return;
    for (const QString &file : TreeFiles::list(m_folder))
        TreeFiles::remove(m_folder + u'/' + file);
}

} // namespace oz::services
