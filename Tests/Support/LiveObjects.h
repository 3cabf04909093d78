#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

namespace LumoraTest {

/// Every QObject alive in the process, as Qt's object hooks report them: what leaks shows up
/// here even when nothing references it any more.
///
/// Install once, before the objects of interest are made; objects made earlier are not known.
namespace LiveObjects {

void install();
/// How many QObjects are alive.
int count();
/// The live objects of `type` (or derived) that live on the calling thread; objects of other
/// threads may be going away meanwhile.
QList<QObject*> onThisThread(const QMetaObject& type);
template <typename T>
QList<T*> of() {
    QList<T*> typed;
    for (QObject* object : onThisThread(T::staticMetaObject)) {
        typed.append(static_cast<T*>(object));
    }
    return typed;
}

}  // namespace LiveObjects

}  // namespace LumoraTest
