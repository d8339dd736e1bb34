#include "simulator/host_windows/delayed_answers.h"

/* For ZwWaitForSingleObject. */
#include <ntifs.h>

/* While an IRP is held back, these of its fields are ours. */
#define DUE_TIME(irp) ((irp)->Tail.Overlay.DriverContext[0])
#define OWNER(irp) ((irp)->Tail.Overlay.DriverContext[1])

#define UNITS_PER_MS 10000u /* interrupt time counts 100 ns */

static void complete(PIRP irp, NTSTATUS status, ULONG_PTR information)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = information;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
}

static void NTAPI onCancel(PDEVICE_OBJECT object, PIRP irp)
{
    (void)object;
    IoReleaseCancelSpinLock(irp->CancelIrql);
    DelayedAnswers* const delayed = OWNER(irp);
    KIRQL irql;
    KeAcquireSpinLock(&delayed->lock, &irql);
    RemoveEntryList(&irp->Tail.Overlay.ListEntry);
    KeReleaseSpinLock(&delayed->lock, irql);
    complete(irp, STATUS_CANCELLED, 0);
}

/* Takes the IRP off the list; FALSE when its cancel routine runs and will do so. */
static BOOLEAN detach(PIRP irp)
{
    if (IoSetCancelRoutine(irp, NULL) == NULL)
        return FALSE;
    RemoveEntryList(&irp->Tail.Overlay.ListEntry);
    return TRUE;
}

/* Detaches an IRP that is due at `now`. When there is none, tells when the next one will be. */
static PIRP detachDue(DelayedAnswers* delayed, ULONGLONG now, ULONGLONG* next)
{
    PIRP result = NULL;
    *next = 0;
    KIRQL irql;
    KeAcquireSpinLock(&delayed->lock, &irql);
    for (PLIST_ENTRY entry = delayed->irps.Flink; entry != &delayed->irps; entry = entry->Flink) {
        const PIRP irp = CONTAINING_RECORD(entry, IRP, Tail.Overlay.ListEntry);
        const ULONGLONG due = (ULONG_PTR)DUE_TIME(irp);
        if (due <= now && detach(irp)) {
            result = irp;
            break;
        }
        if (due > now && (*next == 0 || due < *next))
            *next = due;
    }
    KeReleaseSpinLock(&delayed->lock, irql);
    return result;
}

static PIRP detachOfFile(DelayedAnswers* delayed, const FILE_OBJECT* file)
{
    PIRP result = NULL;
    KIRQL irql;
    KeAcquireSpinLock(&delayed->lock, &irql);
    for (PLIST_ENTRY entry = delayed->irps.Flink; entry != &delayed->irps; entry = entry->Flink) {
        const PIRP irp = CONTAINING_RECORD(entry, IRP, Tail.Overlay.ListEntry);
        const BOOLEAN wanted =
            file == NULL || IoGetCurrentIrpStackLocation(irp)->FileObject == file;
        if (wanted && detach(irp)) {
            result = irp;
            break;
        }
    }
    KeReleaseSpinLock(&delayed->lock, irql);
    return result;
}

static void NTAPI run(PVOID context)
{
    DelayedAnswers* const delayed = context;
    while (InterlockedCompareExchange(&delayed->stop, 0, 0) == 0) {
        const ULONGLONG now = KeQueryInterruptTime();
        ULONGLONG next = 0;
        const PIRP irp = detachDue(delayed, now, &next);
        if (irp != NULL) {
            complete(irp, irp->IoStatus.Status, irp->IoStatus.Information);
            continue;
        }
        LARGE_INTEGER timeout;
        timeout.QuadPart = -(LONGLONG)(next - now); /* negative: relative */
        KeWaitForSingleObject(&delayed->wake, Executive, KernelMode, FALSE,
                              next == 0 ? NULL : &timeout);
    }
    PsTerminateSystemThread(STATUS_SUCCESS);
}

NTSTATUS delayedAnswersStart(DelayedAnswers* delayed)
{
    KeInitializeSpinLock(&delayed->lock);
    InitializeListHead(&delayed->irps);
    KeInitializeEvent(&delayed->wake, SynchronizationEvent, FALSE);
    delayed->stop = 0;
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, NULL, OBJ_KERNEL_HANDLE, NULL, NULL);
    return PsCreateSystemThread(&delayed->thread, THREAD_ALL_ACCESS, &attributes, NULL, NULL, run,
                                delayed);
}

void delayedAnswersStop(DelayedAnswers* delayed)
{
    InterlockedExchange(&delayed->stop, 1);
    KeSetEvent(&delayed->wake, IO_NO_INCREMENT, FALSE);
    ZwWaitForSingleObject(delayed->thread, FALSE, NULL);
    ZwClose(delayed->thread);
    delayedAnswersCancelFile(delayed, NULL);
}

NTSTATUS delayedAnswersTake(DelayedAnswers* delayed, PIRP irp, uint32_t delayMs)
{
    DUE_TIME(irp) = (PVOID)(ULONG_PTR)(KeQueryInterruptTime() + (ULONGLONG)delayMs * UNITS_PER_MS);
    OWNER(irp) = delayed;
    IoMarkIrpPending(irp);
    KIRQL irql;
    KeAcquireSpinLock(&delayed->lock, &irql);
    InsertTailList(&delayed->irps, &irp->Tail.Overlay.ListEntry);
    IoSetCancelRoutine(irp, onCancel);
    /* Cancelled before it had a cancel routine: nobody else will complete it. */
    const BOOLEAN tooLate = irp->Cancel && detach(irp);
    KeReleaseSpinLock(&delayed->lock, irql);
    if (tooLate)
        complete(irp, STATUS_CANCELLED, 0);
    else
        KeSetEvent(&delayed->wake, IO_NO_INCREMENT, FALSE);
    return STATUS_PENDING;
}

void delayedAnswersCancelFile(DelayedAnswers* delayed, PFILE_OBJECT file)
{
    PIRP irp = detachOfFile(delayed, file);
    while (irp != NULL) {
        complete(irp, STATUS_CANCELLED, 0);
        irp = detachOfFile(delayed, file);
    }
}
