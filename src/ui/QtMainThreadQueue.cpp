#include "ui/QtMainThreadQueue.h"

#include <QCoreApplication>
#include <QMetaObject>

void LQtMainThreadQueue::Post(std::function<void()> call) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(call),
                              Qt::QueuedConnection);
}
