#ifndef QUORVEL_SIMULATOR_HOST_WINDOWS_DELAYED_ANSWERS_H
#define QUORVEL_SIMULATOR_HOST_WINDOWS_DELAYED_ANSWERS_H

/* Holds finished requests back for a while and then completes them from a thread of its own, so
 * that a slow answer keeps nobody waiting but its caller. A caller that gives up (CancelIo, or
 * the end of its process) gets STATUS_CANCELLED at once. */

#include <stdint.h>
#include <wdm.h>

typedef struct DelayedAnswers
{
    KSPIN_LOCK lock; /* guards the list */
    LIST_ENTRY irps;
    KEVENT wake;
    volatile LONG stop;
    HANDLE thread;
} DelayedAnswers;

/* Starts and ends the thread; PASSIVE_LEVEL. What is still held back at the end is cancelled. */
NTSTATUS delayedAnswersStart(DelayedAnswers* delayed);
void delayedAnswersStop(DelayedAnswers* delayed);

/* Takes the IRP, whose IoStatus holds the answer already. Returns what the dispatch routine is to
 * return, STATUS_PENDING. */
NTSTATUS delayedAnswersTake(DelayedAnswers* delayed, PIRP irp, uint32_t delayMs);

/* Cancels what is held back for that file object, or everything for a null pointer. */
void delayedAnswersCancelFile(DelayedAnswers* delayed, PFILE_OBJECT file);

#endif
