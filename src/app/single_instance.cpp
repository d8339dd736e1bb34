#include "app/single_instance.h"

#include <QDebug>

SingleInstance::SingleInstance()
    : guard(QStringLiteral("QuorvelQtDriverSemaphore"), 1, QSystemSemaphore::Open)
{
    guard.acquire();
    marker.setKey(QStringLiteral("QuorvelQtDriverSharedMemory"));
}

SingleInstance::Claim SingleInstance::claim()
{
    const Claim claim = decide();
    guard.release(1);
    if (claim == Claim::alreadyRunning)
        qDebug() << "Quorvel Mixer 已经在运行中。";
    else if (claim == Claim::failed)
        qDebug() << "无法创建共享内存，程序退出。";
    return claim;
}

SingleInstance::Claim SingleInstance::decide()
{
    if (marker.attach(QSharedMemory::ReadWrite))
        return Claim::alreadyRunning;
    return marker.create(1, QSharedMemory::ReadWrite) ? Claim::first : Claim::failed;
}
