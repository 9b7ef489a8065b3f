#include "device/Activity.hpp"

namespace oz::services {

const WordList<bool> &activityWords()
{
    static const WordList<bool> words{{true, "active", "active"}, {false, "standby", "standby"}};
    return words;
}

const Fields<Activity> &activityFields()
{
    using C = Columns<Activity>;
    static const Fields<Activity> fields(QStringLiteral("/dev/power/mgr"),
        {
            {"state", "user_activity", C::words(&Activity::isUsed, activityWords(), "unknown"),
                "whether somebody uses the phone"},
        });
    return fields;
}

} // namespace oz::services
