#include "publishing/Tree.hpp"

#include "publishing/Log.hpp"
#include "source/Error.hpp"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

namespace oz::services {

namespace {

constexpr std::chrono::milliseconds FirstPause(100);
constexpr std::chrono::milliseconds LongestPause(5'000);

// Errors that may be over in a moment.
bool mayPass(int error)
{
    constexpr std::array passing{
        ENOSPC, EDQUOT, EMFILE, ENFILE, ENOMEM, ENOBUFS, EIO, EAGAIN, ETIMEDOUT, EINTR, EBUSY};
    return std::find(passing.begin(), passing.end(), error) != passing.end();
}

} // namespace

QString Tree::problemText() const
{
    QStringList texts;
    for (auto problem = m_problems.cbegin(); problem != m_problems.cend(); ++problem)
        texts.append(problem.key() + QLatin1String(": ") + problem.value());
    return texts.join(QLatin1String("; "));
}

void Tree::tell(const QString &path, const QVariantMap &attributes)
{
    QVariantMap &told = m_told[path];
    if (told == attributes)
        return;
    told = attributes;
    Q_EMIT toldAnew(path);
}

void Tree::add(const QString &path)
{
    ++m_objects[path];
}

void Tree::remove(const QString &path)
{
    setProblem(path, {});
    if (--m_objects[path] == 0) {
        m_objects.remove(path);
        m_told.remove(path);
    }
}

void Tree::setProblem(const QString &path, const QString &problem)
{
    if (m_problems.value(path) == problem)
        return;
    if (problem.isEmpty())
        m_problems.remove(path);
    else
        m_problems.insert(path, problem);
    Q_EMIT problemsChanged();
}

TreeObject::TreeObject(Tree &tree, const QString &path) : m_tree(tree), m_path(path)
{
    m_tree.add(path);
}

TreeObject::~TreeObject()
{
    m_tree.remove(m_path);
}

void TreeObject::attempt()
{
    Q_EMIT m_tree.aboutToPut(m_path);
    const Failure failure = put();
    Q_EMIT m_tree.hasPut(m_path);
    if (failure.error == 0) {
        if (m_retry && std::exchange(m_isFailing, false)) {
            m_retry->stop();
            qCInfo(logServices).noquote() << m_path << "is in the tree as it shall be again";
            m_tree.setProblem(m_path, {});
        }
        return;
    }
    if (m_tree.isStarting() && !mayPass(failure.error))
        throw Error(QLatin1String("cannot publish ") + m_path + QLatin1String(": ") + failure.text);
    if (!std::exchange(m_isFailing, true)) {
        qCWarning(logServices).noquote() << QString(QLatin1String("cannot publish ") + m_path
            + QLatin1String(": ") + failure.text + QLatin1String("; it is tried again until it is done"));
        m_pause = FirstPause;
    }
    retryLater();
    m_tree.setProblem(m_path, failure.text);
}

void TreeObject::retryLater()
{
    if (!m_retry) {
        m_retry = std::make_unique<QTimer>();
        m_retry->setSingleShot(true);
        QObject::connect(m_retry.get(), &QTimer::timeout, m_retry.get(), [this] { attempt(); });
    }
    if (m_retry->isActive())
        return;
    m_retry->start(m_pause);
    m_pause = std::min(m_pause * 2, LongestPause);
}

} // namespace oz::services
