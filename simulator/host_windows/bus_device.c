#include "simulator/host_windows/bus_device.h"

#define NAME_CHARACTERS 64

typedef struct Name
{
    UNICODE_STRING text;
    WCHAR characters[NAME_CHARACTERS];
} Name;

static void append(Name* name, WCHAR character)
{
    name->characters[name->text.Length / sizeof(WCHAR)] = character;
    name->text.Length = (USHORT)(name->text.Length + sizeof(WCHAR));
}

/* The prefixes below leave room for any number. */
static void makeName(Name* name, const WCHAR* prefix, uint32_t number)
{
    name->text.Buffer = name->characters;
    name->text.Length = 0;
    name->text.MaximumLength = sizeof name->characters;
    for (; *prefix != 0; ++prefix)
        append(name, *prefix);
    uint32_t unit = 1;
    while (number / unit >= 10)
        unit *= 10;
    for (; unit > 0; unit /= 10)
        append(name, (WCHAR)(L'0' + number / unit % 10));
}

static void makeLinkName(Name* name, uint32_t bus)
{
    makeName(name, L"\\DosDevices\\QuorvelAudioBus", bus);
}

static NTSTATUS createLinkedDevice(Host* host, UNICODE_STRING* name, UNICODE_STRING* link,
                                   BusDevice** result)
{
    PDEVICE_OBJECT object = NULL;
    NTSTATUS status = IoCreateDevice(host->driver, sizeof(BusDevice), name, FILE_DEVICE_UNKNOWN,
                                     FILE_DEVICE_SECURE_OPEN, FALSE, &object);
    if (!NT_SUCCESS(status))
        return status;
    status = IoCreateSymbolicLink(link, name);
    if (!NT_SUCCESS(status)) {
        IoDeleteDevice(object);
        return status;
    }
    *result = object->DeviceExtension;
    (*result)->header.host = host;
    (*result)->object = object;
    (*result)->files = 0;
    return STATUS_SUCCESS;
}

/* A new device may come before the last handle on the old one of the same bus is closed, so the
 * devices' own names are all different. Programs only know the link. */
static NTSTATUS plug(Host* host, uint32_t bus, uint32_t generation)
{
    Name name;
    Name link;
    makeName(&name, L"\\Device\\QuorvelSimulatorBus", host->devicesMade++);
    makeLinkName(&link, bus);
    BusDevice* device = NULL;
    const NTSTATUS status = createLinkedDevice(host, &name.text, &link.text, &device);
    if (!NT_SUCCESS(status))
        return status;
    device->generation = generation;
    device->bus = bus;
    device->object->Flags |= DO_BUFFERED_IO;
    device->object->Flags &= ~(ULONG)DO_DEVICE_INITIALIZING;
    host->plugged = device;
    return STATUS_SUCCESS;
}

static void unplug(Host* host)
{
    Name link;
    makeLinkName(&link, host->plugged->bus);
    IoDeleteSymbolicLink(&link.text);
    InsertTailList(&host->unplugged, &host->plugged->link);
    host->plugged = NULL;
}

static void deleteUnused(Host* host, BOOLEAN evenUsed)
{
    PLIST_ENTRY entry = host->unplugged.Flink;
    while (entry != &host->unplugged) {
        BusDevice* const device = CONTAINING_RECORD(entry, BusDevice, link);
        entry = entry->Flink;
        if (!evenUsed && InterlockedCompareExchange(&device->files, 0, 0) != 0)
            continue;
        RemoveEntryList(&device->link);
        IoDeleteDevice(device->object);
    }
}

static void takeBackPlugging(Host* host)
{
    const SimCall call = {.code = SIM_UNPLUG};
    ExAcquireFastMutex(&host->modelLock);
    simControl(host->model, &call);
    ExReleaseFastMutex(&host->modelLock);
}

NTSTATUS busDevicesFollowModel(Host* host)
{
    ExAcquireFastMutex(&host->modelLock);
    const BOOLEAN wanted = host->model->state.plugged != 0;
    const uint32_t bus = host->model->state.bus;
    const uint32_t generation = host->model->generation;
    ExReleaseFastMutex(&host->modelLock);

    if (host->plugged != NULL && (!wanted || host->plugged->generation != generation))
        unplug(host);
    deleteUnused(host, FALSE);
    if (!wanted || host->plugged != NULL)
        return STATUS_SUCCESS;
    const NTSTATUS status = plug(host, bus, generation);
    if (!NT_SUCCESS(status))
        takeBackPlugging(host);
    return status;
}

void busDevicesRemoveAll(Host* host)
{
    if (host->plugged != NULL)
        unplug(host);
    deleteUnused(host, TRUE);
}

BOOLEAN busDeviceIsAlive(const Host* host, const BusDevice* device)
{
    return host->model->state.plugged != 0 && device->generation == host->model->generation;
}
