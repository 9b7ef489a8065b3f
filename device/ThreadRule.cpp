#include "ThreadRule.hpp"

#ifdef OZ_ASSERTIONS

#include <QEvent>
#include <QObject>

namespace oz::device {

namespace {

// An event filter, so that the objects have neither a child nor an override of their own for it.
class ThreadRule : public QObject
{
    bool eventFilter(QObject *object, QEvent *event) override
    {
        // Comes before the move, also where a parent is moved.
        if (event->type() == QEvent::ThreadChange) {
            qFatal("%s: an object stays on the thread that created it; neither it nor a parent of it may be "
                   "moved to another thread",
                object->metaObject()->className());
        }
        return false;
    }
};

} // namespace

void keepOnThread(QObject *object)
{
    // A filter is on the thread of what it filters.
    static thread_local ThreadRule s_rule;
    object->installEventFilter(&s_rule);
}

} // namespace oz::device

#endif
