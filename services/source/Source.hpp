#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>

namespace oz::services {

/*!
 * The source of a facility's values: a real service of the system, or the simulated phone. At each moment it
 * knows its state, or is absent for a reason; before its first answer it is neither. It blocks nobody, and
 * answers every request later, through a callback.
 */
class Source : public QObject
{
    Q_OBJECT

public:
    enum class Presence {
        Pending, //!< it is finding out
        Known,
        Absent, //!< absence() says why
    };

    [[nodiscard]] Presence presence() const { return m_presence; }
    [[nodiscard]] bool isKnown() const { return m_presence == Presence::Known; }
    /*! Why it knows nothing, in words for a person; empty while it knows its state. */
    [[nodiscard]] QString absence() const { return m_absence; }
    /*! A remark for people about a source that works; empty where there is none. */
    [[nodiscard]] const QString &remark() const { return m_remark; }
    /*! The names in remark() that people gave their devices. */
    [[nodiscard]] const QStringList &remarkNames() const { return m_remarkNames; }

Q_SIGNALS:
    /*! The state, or whether there is one, has changed. */
    void changed();

protected:
    explicit Source(const QString &pending = QStringLiteral("it has told nothing yet")) : m_absence(pending)
    {
    }
    void become(Presence presence, const QString &absence)
    {
        m_presence = presence;
        m_absence = absence;
        Q_EMIT changed();
    }

    /*! \a names are those in \a remark that people gave their devices. */
    void setRemark(const QString &remark, const QStringList &names = {})
    {
        m_remarkNames = names;
        if (std::exchange(m_remark, remark) != remark && isKnown())
            Q_EMIT changed();
    }

private:
    Presence m_presence = Presence::Pending;
    QString m_absence;
    QString m_remark;
    QStringList m_remarkNames;
};

/*! A source whose state is a \a StateType: a plain record that compares with ==. */
template <typename StateType>
class StateSource : public Source
{
public:
    using State = StateType;

    /*! The state; nothing while it is not known. */
    [[nodiscard]] const std::optional<State> &state() const { return m_state; }

protected:
    using Source::Source;

    /*! Takes over the state; what is no news is not announced. */
    void know(State state)
    {
        if (isKnown() && m_state == state)
            return;
        m_state = std::move(state);
        become(Presence::Known, {});
    }

    /*! The state is not known any more, or was not found out: \a reason says why. */
    void setAbsent(const QString &reason)
    {
        if (presence() == Presence::Absent && absence() == reason)
            return;
        m_state.reset();
        become(Presence::Absent, reason);
    }

private:
    std::optional<State> m_state;
};

/*! The outcome of a request: an error is an errno that is not 0. */
struct Outcome
{
    int error = 0;
    QString errorText;
    QString text; //!< what was asked for: a session's key, an address
};

/*! Takes the outcome of a request, once, now or later. */
using Done = std::function<void(const Outcome &outcome)>;

} // namespace oz::services
