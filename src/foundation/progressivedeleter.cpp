#include "foundation/progressivedeleter.h"

#include <QCoreApplication>

namespace Ovra {

ProgressiveDeleter::Object::Object()
    : m_links(new Links)
{
}

ProgressiveDeleter::Object::Object(const Object &)
    : m_links(new Links)
{
}

ProgressiveDeleter::Object &ProgressiveDeleter::Object::operator=(const Object &)
{
    return *this; // links belong to the queued object, not to its value
}

ProgressiveDeleter::Object::~Object() = default;

ProxyObject::~ProxyObject()
{
    m_object->release();
}

ProgressiveDeleter::ProgressiveDeleter()
{
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &ProgressiveDeleter::deleteOne);
}

ProgressiveDeleter &ProgressiveDeleter::instance()
{
    static ProgressiveDeleter deleter;
    return deleter;
}

void ProgressiveDeleter::enqueue(Object *object, Object *dependsOn)
{
    static bool postRoutineAdded = false;
    if (!postRoutineAdded && QCoreApplication::instance()) {
        qAddPostRoutine(&ProgressiveDeleter::deleteAll);
        postRoutineAdded = true;
    }
    ProgressiveDeleter &deleter = instance();
    if (dependsOn) {
        object->m_links->dependsOn = dependsOn;
        ++dependsOn->m_links->dependents;
    }
    deleter.m_queue.append(object);
    if (!deleter.m_timer.isActive())
        deleter.m_timer.start();
}

ProgressiveDeleter::Object *ProgressiveDeleter::enqueue(Ovra::Object *object, Object *dependsOn)
{
    auto *proxy = new ProxyObject(object);
    enqueue(static_cast<Object *>(proxy), dependsOn);
    return proxy;
}

int ProgressiveDeleter::pending()
{
    return instance().m_queue.size();
}

void ProgressiveDeleter::deleteObject(Object *object)
{
    if (object->m_links->dependents > 0) {
        // Something still leans on it: let the next in line go first, and wait at the end.
        if (!m_queue.isEmpty())
            deleteObject(m_queue.takeFirst());
        m_queue.append(object);
        return;
    }
    if (Object *base = object->m_links->dependsOn)
        --base->m_links->dependents;
    delete object;
}

bool ProgressiveDeleter::onlyWaitingObjectsLeft() const
{
    for (const Object *object : m_queue) {
        if (object->m_links->dependents == 0)
            return false;
    }
    return true;
}

void ProgressiveDeleter::deleteOne()
{
    if (m_queue.isEmpty()) {
        m_timer.stop();
        return;
    }
    deleteObject(m_queue.takeFirst());
    // Objects that only wait for each other (a cycle, which callers must not build)
    // can't go by themselves: the timer rests until a new object arrives or the
    // application ends.
    if (!m_queue.isEmpty() && onlyWaitingObjectsLeft())
        m_timer.stop();
}

void ProgressiveDeleter::deleteAll()
{
    ProgressiveDeleter &deleter = instance();
    deleter.m_timer.stop();
    while (!deleter.m_queue.isEmpty()) {
        if (deleter.onlyWaitingObjectsLeft()) {
            // Only a cycle is left: drop its links, as nothing is left to order.
            for (Object *object : qAsConst(deleter.m_queue))
                *object->m_links = Object::Links();
        }
        deleter.deleteObject(deleter.m_queue.takeFirst());
    }
}

} // namespace Ovra
