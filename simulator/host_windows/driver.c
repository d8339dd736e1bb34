/* The simulated interface as a kernel-mode driver: the control door, which is always there, and
 * the device of the interface while it is plugged. */

#include "simulator/host_windows/bus_device.h"
#include "simulator/host_windows/error_status.h"
#include "simulator/host_windows/host.h"

static UNICODE_STRING doorDevice = RTL_CONSTANT_STRING(L"\\Device\\QuorvelSimulator");
static UNICODE_STRING doorLink = RTL_CONSTANT_STRING(L"\\DosDevices\\QuorvelSimulator");

static Host* hostOf(PDEVICE_OBJECT object)
{
    const DeviceHeader* const header = object->DeviceExtension;
    return header->host;
}

static NTSTATUS finish(PIRP irp, NTSTATUS status, ULONG_PTR information)
{
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = information;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

static SimHandle handleOf(const FILE_OBJECT* file)
{
    return (SimHandle)(ULONG_PTR)file->FsContext;
}

static NTSTATUS openBusDevice(Host* host, BusDevice* device, PFILE_OBJECT file)
{
    /* The device has no inner name space. */
    if (file->FileName.Length != 0)
        return STATUS_OBJECT_NAME_NOT_FOUND;
    NTSTATUS status = STATUS_OBJECT_NAME_NOT_FOUND;
    ExAcquireFastMutex(&host->modelLock);
    if (busDeviceIsAlive(host, device)) {
        file->FsContext = (PVOID)(ULONG_PTR)simOpen(host->model);
        InterlockedIncrement(&device->files);
        status = STATUS_SUCCESS;
    }
    ExReleaseFastMutex(&host->modelLock);
    return status;
}

static NTSTATUS NTAPI onCreate(PDEVICE_OBJECT object, PIRP irp)
{
    Host* const host = hostOf(object);
    const PFILE_OBJECT file = IoGetCurrentIrpStackLocation(irp)->FileObject;
    NTSTATUS status = STATUS_SUCCESS;
    if (object != host->door)
        status = openBusDevice(host, object->DeviceExtension, file);
    else if (file->FileName.Length != 0)
        status = STATUS_OBJECT_NAME_NOT_FOUND;
    return finish(irp, status, 0);
}

/* The last handle is closed: nobody waits for an answer any more. */
static NTSTATUS NTAPI onCleanup(PDEVICE_OBJECT object, PIRP irp)
{
    delayedAnswersCancelFile(&hostOf(object)->delayed,
                             IoGetCurrentIrpStackLocation(irp)->FileObject);
    return finish(irp, STATUS_SUCCESS, 0);
}

/* Nothing refers to the file object any more. Unlike the clean-up, every kernel that loads this
 * driver sends this one, so that the handle is counted out here. */
static NTSTATUS NTAPI onClose(PDEVICE_OBJECT object, PIRP irp)
{
    Host* const host = hostOf(object);
    if (object != host->door) {
        BusDevice* const device = object->DeviceExtension;
        ExAcquireFastMutex(&host->modelLock);
        simClose(host->model, handleOf(IoGetCurrentIrpStackLocation(irp)->FileObject));
        ExReleaseFastMutex(&host->modelLock);
        InterlockedDecrement(&device->files);
    }
    return finish(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS answerBusRequest(Host* host, PIRP irp, const SimCall* call)
{
    const SimHandle handle = handleOf(IoGetCurrentIrpStackLocation(irp)->FileObject);
    ExAcquireFastMutex(&host->modelLock);
    const SimAnswer answer = simRequest(host->model, handle, call);
    ExReleaseFastMutex(&host->modelLock);
    const NTSTATUS status = statusOfError(answer.error);
    if (answer.delayMs == 0)
        return finish(irp, status, answer.returned);
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = answer.returned;
    return delayedAnswersTake(&host->delayed, irp, answer.delayMs);
}

static NTSTATUS answerDoorRequest(Host* host, PIRP irp, const SimCall* call)
{
    KeWaitForSingleObject(&host->doorLock, Executive, KernelMode, FALSE, NULL);
    ExAcquireFastMutex(&host->modelLock);
    const SimAnswer answer = simControl(host->model, call);
    ExReleaseFastMutex(&host->modelLock);
    NTSTATUS status = statusOfError(answer.error);
    if (NT_SUCCESS(status))
        status = busDevicesFollowModel(host);
    KeReleaseMutex(&host->doorLock, FALSE);
    return finish(irp, status, NT_SUCCESS(status) ? answer.returned : 0);
}

static NTSTATUS NTAPI onDeviceControl(PDEVICE_OBJECT object, PIRP irp)
{
    Host* const host = hostOf(object);
    const IO_STACK_LOCATION* const location = IoGetCurrentIrpStackLocation(irp);
    SimCall call = {
        .timeMs = (uint32_t)(KeQueryInterruptTime() / 10000u),
        .code = location->Parameters.DeviceIoControl.IoControlCode,
    };
    /* Only with this method has the kernel copied and bounded both buffers for us. The model
     * knows no code of another one; it hears of the attempt and refuses it. */
    if ((call.code & 3u) == METHOD_BUFFERED) {
        call.input = irp->AssociatedIrp.SystemBuffer;
        call.inputLength = location->Parameters.DeviceIoControl.InputBufferLength;
        call.output = irp->AssociatedIrp.SystemBuffer;
        call.outputLength = location->Parameters.DeviceIoControl.OutputBufferLength;
    }
    return object == host->door ? answerDoorRequest(host, irp, &call)
                                : answerBusRequest(host, irp, &call);
}

static void NTAPI onUnload(PDRIVER_OBJECT driver)
{
    Host* const host = hostOf(driver->DeviceObject);
    IoDeleteSymbolicLink(&doorLink);
    delayedAnswersStop(&host->delayed);
    busDevicesRemoveAll(host);
    ExFreePoolWithTag(host->model, HOST_POOL_TAG);
    IoDeleteDevice(host->door);
}

static NTSTATUS makeModel(Host* host)
{
    host->model = ExAllocatePoolWithTag(PagedPool, sizeof(SimModel), HOST_POOL_TAG);
    if (host->model == NULL)
        return STATUS_INSUFFICIENT_RESOURCES;
    RtlZeroMemory(host->model, sizeof(SimModel));
    simInitialise(host->model);
    return STATUS_SUCCESS;
}

/* Each step undoes itself when it fails; the earlier ones are undone here. */
static NTSTATUS startHost(Host* host)
{
    ExInitializeFastMutex(&host->modelLock);
    KeInitializeMutex(&host->doorLock, 0);
    InitializeListHead(&host->unplugged);
    NTSTATUS status = makeModel(host);
    if (!NT_SUCCESS(status))
        return status;
    status = delayedAnswersStart(&host->delayed);
    if (NT_SUCCESS(status)) {
        status = IoCreateSymbolicLink(&doorLink, &doorDevice);
        if (NT_SUCCESS(status))
            return STATUS_SUCCESS;
        delayedAnswersStop(&host->delayed);
    }
    ExFreePoolWithTag(host->model, HOST_POOL_TAG);
    return status;
}

NTSTATUS NTAPI DriverEntry(PDRIVER_OBJECT driver, PUNICODE_STRING registryPath);

NTSTATUS NTAPI DriverEntry(PDRIVER_OBJECT driver, PUNICODE_STRING registryPath)
{
    (void)registryPath;
    driver->MajorFunction[IRP_MJ_CREATE] = onCreate;
    driver->MajorFunction[IRP_MJ_CLEANUP] = onCleanup;
    driver->MajorFunction[IRP_MJ_CLOSE] = onClose;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = onDeviceControl;
    driver->DriverUnload = onUnload;

    PDEVICE_OBJECT door = NULL;
    NTSTATUS status = IoCreateDevice(driver, sizeof(Host), &doorDevice, FILE_DEVICE_UNKNOWN,
                                     FILE_DEVICE_SECURE_OPEN, FALSE, &door);
    if (!NT_SUCCESS(status))
        return status;
    Host* const host = door->DeviceExtension;
    host->header.host = host;
    host->driver = driver;
    host->door = door;
    status = startHost(host);
    if (!NT_SUCCESS(status)) {
        IoDeleteDevice(door);
        return status;
    }
    door->Flags |= DO_BUFFERED_IO;
    door->Flags &= ~(ULONG)DO_DEVICE_INITIALIZING;
    return STATUS_SUCCESS;
}
