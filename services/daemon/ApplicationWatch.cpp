#include "daemon/ApplicationWatch.hpp"

#include "publishing/Log.hpp"
#include "publishing/Tree.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

#include <cerrno>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace oz::services {

namespace {

// Tools speak to the daemon there, on behalf of no application.
constexpr QLatin1String OwnFolder("/pps/system/ozdeviced");

QByteArray fileOf(const QString &path)
{
    return QFile::encodeName(devicePath(path));
}

QByteArray folderOf(const QByteArray &file)
{
    return file.first(file.lastIndexOf('/'));
}

} // namespace

ApplicationWatch::ApplicationWatch(const Tree &tree, For what) : m_tree(tree)
{
    connect(&tree, &Tree::asked, this, &ApplicationWatch::onUse);
    if (what == For::Request)
        return;
    connect(&tree, &Tree::opened, this, &ApplicationWatch::onUse);
    m_inotify = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_inotify < 0) {
        qCWarning(logServices).noquote()
            << "an application that opens an object is not noticed:" << qt_error_string(errno);
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { look(); });
    for (const QString &path : tree.objects())
        watchFolderOf(path);
    connect(&tree, &Tree::aboutToPut, this, [this] { look(); });
    connect(&tree, &Tree::hasPut, this, [this](const QString &path) {
        look(path); // which the services may have read themselves
        watchFolderOf(path);
    });
}

ApplicationWatch::~ApplicationWatch()
{
    if (m_inotify >= 0)
        ::close(m_inotify);
}

bool ApplicationWatch::hasCome()
{
    look();
    return m_hasCome;
}

// The folder of an object that is not there yet is watched once that is.
void ApplicationWatch::watchFolderOf(const QString &path)
{
    if (path.startsWith(OwnFolder))
        return;
    const QByteArray folder = folderOf(fileOf(path));
    const int descriptor = ::inotify_add_watch(m_inotify, folder.constData(), IN_OPEN | IN_ONLYDIR);
    if (descriptor >= 0)
        m_folders[descriptor] = folder;
    else if (errno != ENOENT)
        qCWarning(logServices).noquote() << "an application that opens an object in" << folder
                                         << "is not noticed:" << qt_error_string(errno);
}

void ApplicationWatch::look(const QString &except)
{
    if (m_inotify < 0 || m_hasCome)
        return;
    const QByteArray own = except.isEmpty() ? QByteArray() : fileOf(except);
    alignas(inotify_event) char buffer[16 * 1024];
    bool isOpened = false;
    for (ssize_t size = 0; (size = ::read(m_inotify, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            at += ssize_t(sizeof *event + event->len);
            // More opens than the kernel can tell of are those of an application.
            isOpened |= (event->mask & IN_Q_OVERFLOW) != 0;
            // Names with a dot are files that publishers make objects of.
            const bool isObject = event->len > 0 && event->name[0] != '.' && !(event->mask & IN_ISDIR);
            if (isObject && m_folders[event->wd] + '/' + QByteArray(event->name) != own)
                isOpened = true;
        }
    }
    if (isOpened)
        onUse({});
}

void ApplicationWatch::onUse(const QString &path)
{
    if (!path.startsWith(OwnFolder) && !std::exchange(m_hasCome, true))
        Q_EMIT came();
}

} // namespace oz::services
