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
    // Twice: on Unix a copy that was killed leaves its marker, which goes with the first who lets
    // go of it. That of a running copy is still there the second time.
    if (marker.attach(QSharedMemory::ReadWrite) && marker.detach() &&
        marker.attach(QSharedMemory::ReadWrite))
        return Claim::alreadyRunning;
    return marker.create(1, QSharedMemory::ReadWrite) ? Claim::first : Claim::failed;
}
