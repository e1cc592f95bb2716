#pragma once

#include "foundation/object.h"

#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

namespace Ovra {

// Frees large models a piece at a time from the event loop, so that closing a project
// with thousands of nodes doesn't freeze the window. One object goes every 10 ms; an
// object that others depend on waits until they have gone. Whatever is left when the
// application ends is freed then.
class OVRA_EXPORT ProgressiveDeleter : public QObject
{
    Q_OBJECT
public:
    // What can be queued. Copying gives a fresh, unlinked record.
    class OVRA_EXPORT Object
    {
    public:
        Object();
        Object(const Object &other);
        Object &operator=(const Object &other);
        virtual ~Object();

    private:
        friend class ProgressiveDeleter;
        struct Links
        {
            Object *dependsOn = nullptr;
            int dependents = 0;
        };
        std::unique_ptr<Links> m_links;
    };

    // Queues `object`; it goes only after every object queued as depending on it.
    static void enqueue(Object *object, Object *dependsOn = nullptr);
    // Queues a model object, which is released rather than deleted. Returns its place
    // in the queue, so that other objects can depend on it.
    static Object *enqueue(Ovra::Object *object, Object *dependsOn = nullptr);
    // Frees everything queued, now.
    static void deleteAll();
    // Objects still waiting.
    static int pending();

public slots:
    void deleteOne();

private:
    ProgressiveDeleter();
    static ProgressiveDeleter &instance();
    void deleteObject(Object *object);
    bool onlyWaitingObjectsLeft() const;

    QList<Object *> m_queue;
    QTimer m_timer;
};

// Stands for a model object in the queue and releases it when its turn comes.
class OVRA_EXPORT ProxyObject : public ProgressiveDeleter::Object
{
public:
    explicit ProxyObject(Ovra::Object *object) : m_object(object) {}
    ~ProxyObject() override;

private:
    Ovra::Object *m_object;
};

} // namespace Ovra
