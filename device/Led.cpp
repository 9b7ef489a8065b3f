#include <oz/device/Led.hpp>

#include "LedPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

Led::Led(QObject *parent) : Led(LedColor::Red, parent) { }

Led::Led(LedColor::Type color, QObject *parent) : QObject(parent), d(new LedPrivate(*this, color))
{
    keepOnThread(this);
}

Led::~Led()
{
    delete d;
}

LedColor::Type Led::color() const
{
    return d->color();
}

void Led::setColor(LedColor::Type color)
{
    d->setColor(color);
}

void Led::resetColor()
{
    d->resetColor();
}

int Led::remainingFlashCount() const
{
    return d->remainingFlashCount();
}

bool Led::isActive() const
{
    return d->isActive();
}

void Led::flash()
{
    d->flash();
}

void Led::flash(int count)
{
    d->flash(count);
}

void Led::cancel()
{
    d->cancel();
}

} // namespace oz::device
