#include "LiveObjects.h"

#include <private/qhooks_p.h>
#include <QMutex>
#include <QThread>
#include <unordered_set>

namespace LumoraTest::LiveObjects {

namespace {
struct Registry {
    QMutex mutex;
    std::unordered_set<QObject*> objects;
    QHooks::AddQObjectCallback previousAdd = nullptr;
    QHooks::RemoveQObjectCallback previousRemove = nullptr;
};

Registry& registry() {
    static auto* instance = new Registry;  // never destroyed: objects die after static exit
    return *instance;
}

void added(QObject* object) {
    Registry& r = registry();
    {
        QMutexLocker lock(&r.mutex);
        r.objects.insert(object);
    }
    if (r.previousAdd) {
        r.previousAdd(object);
    }
}

void removed(QObject* object) {
    Registry& r = registry();
    {
        QMutexLocker lock(&r.mutex);
        r.objects.erase(object);
    }
    if (r.previousRemove) {
        r.previousRemove(object);
    }
}
}  // namespace

void install() {
    Registry& r = registry();
    if (qtHookData[QHooks::AddQObject] == reinterpret_cast<quintptr>(&added)) {
        return;
    }
    r.previousAdd = reinterpret_cast<QHooks::AddQObjectCallback>(qtHookData[QHooks::AddQObject]);
    r.previousRemove =
        reinterpret_cast<QHooks::RemoveQObjectCallback>(qtHookData[QHooks::RemoveQObject]);
    qtHookData[QHooks::AddQObject] = reinterpret_cast<quintptr>(&added);
    qtHookData[QHooks::RemoveQObject] = reinterpret_cast<quintptr>(&removed);
}

int count() {
    Registry& r = registry();
    QMutexLocker lock(&r.mutex);
    return int(r.objects.size());
}

// An object registered by the construction hook may still be mid-construction on another
// thread; only its QObject part is read here, which the dynamic-type check would flag.
__attribute__((no_sanitize("vptr"))) QList<QObject*> onThisThread(const QMetaObject& type) {
    Registry& r = registry();
    QThread* self = QThread::currentThread();
    QList<QObject*> objects;
    // Under the lock: an object going away on another thread waits in its destructor, with
    // its thread still readable, until this is done.
    QMutexLocker lock(&r.mutex);
    for (QObject* object : r.objects) {
        if (object->thread() == self && type.cast(object)) {
            objects.append(object);
        }
    }
    return objects;
}

}  // namespace LumoraTest::LiveObjects
