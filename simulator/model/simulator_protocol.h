#ifndef QUORVEL_SIMULATOR_PROTOCOL_H
#define QUORVEL_SIMULATOR_PROTOCOL_H

/* What the control door of the simulated interface understands. The door is the device path
 * \\.\QuorvelSimulator; every request is a DeviceIoControl call with one of the codes below and
 * these records, little-endian and without padding. Sizes are exact unless noted. */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SIM_DOOR_NAME "QuorvelSimulator"
#define SIM_DEVICE_NAME "QuorvelAudioBus" /* followed by the decimal bus number */

#define SIM_MIXER_CELLS 8288u
#define SIM_MIXER_BYTES 66304u
#define SIM_LEVELS 192u
#define SIM_FIRMWARE_BYTES 10u
#define SIM_PACKET_BYTES 37u
#define SIM_BUSES 16u
#define SIM_TRACED_INPUT 40u
#define SIM_FOREVER 0xFFFFFFFFu

/* Windows error numbers as they reach the caller. */
#define SIM_ERROR_NONE 0u
#define SIM_ERROR_INVALID_FUNCTION 1u
#define SIM_ERROR_INVALID_PARAMETER 87u
#define SIM_ERROR_INSUFFICIENT_BUFFER 122u
#define SIM_ERROR_DEVICE_NOT_CONNECTED 1167u
#define SIM_ERROR_NO_SYSTEM_RESOURCES 1450u

#define SIM_CONTROL(function) (0x9A510000u | ((0x800u + (function)) << 2))

#define SIM_RESET SIM_CONTROL(0u)          /* unplugs, restores defaults, forgets everything */
#define SIM_PLUG SIM_CONTROL(1u)           /* in: SimPlug */
#define SIM_UNPLUG SIM_CONTROL(2u)         /* nothing */
#define SIM_ADD_FAULT SIM_CONTROL(3u)      /* in: SimFault */
#define SIM_CLEAR_FAULTS SIM_CONTROL(4u)   /* nothing */
#define SIM_SET_LEVELS SIM_CONTROL(5u)     /* in: SimLevels */
#define SIM_MOVE_LEVELS SIM_CONTROL(6u)    /* in: uint32_t, 0 = still */
#define SIM_SET_USB_STATUS SIM_CONTROL(7u) /* in: SimUsbStatus */
#define SIM_SET_FIRMWARE SIM_CONTROL(8u)   /* in: ten bytes */
#define SIM_SET_ENGINE SIM_CONTROL(9u)     /* in: SimEngine */
#define SIM_READ_STATE SIM_CONTROL(10u)    /* out: SimState */
#define SIM_READ_MIXER SIM_CONTROL(11u)    /* out: the mixer table as last accepted */
#define SIM_READ_COMMANDS SIM_CONTROL(12u) /* out: any number of SimCommand */
#define SIM_READ_TRACE SIM_CONTROL(13u)    /* in: uint64_t first number; out: SimTrace, records */
#define SIM_READ_CELLS SIM_CONTROL(14u)    /* in: uint64_t first number; out: SimCells, records */
#define SIM_CLEAR_TRACE SIM_CONTROL(15u)   /* in: uint64_t, forgets the requests up to it */

/* Fault kinds. */
#define SIM_FAULT_FAIL 1u  /* value = error number; the request has no effect */
#define SIM_FAULT_DELAY 2u /* value = milliseconds until the answer */
#define SIM_FAULT_SHORT 3u /* value = the most bytes answered */

/* Engine states. */
#define SIM_ENGINE_STOPPED 0u
#define SIM_ENGINE_RUNNING 1u
#define SIM_ENGINE_INITIALISED 2u

typedef struct SimPlug
{
    uint32_t productId;
    uint32_t bus;
} SimPlug;

/* Hits requests with this code (0 = any): leaves the first `skip` of them alone, then applies to
 * the next `count` (SIM_FOREVER = all). A count of 0 takes back the faults of this kind and
 * code. */
typedef struct SimFault
{
    uint32_t kind;
    uint32_t code;
    uint32_t count;
    uint32_t skip;
    uint32_t value;
} SimFault;

/* Sets levels[0..count) at the slots from `first` on. */
typedef struct SimLevels
{
    uint32_t first;
    uint32_t count;
    int32_t levels[SIM_LEVELS];
} SimLevels;

typedef struct SimUsbStatus
{
    uint32_t errorCount;
    uint16_t statusWord;
    uint8_t statusByte;
    uint8_t reserved;
} SimUsbStatus;

typedef struct SimEngine
{
    uint32_t sampleRate;
    uint32_t bufferSize;
    uint32_t usbLatency;
} SimEngine;

typedef struct SimState
{
    uint32_t plugged;
    uint32_t productId;
    uint32_t bus;
    uint32_t openHandles;   /* now, since the last reset */
    uint32_t openedHandles; /* ever, since the last reset */
    uint32_t engineState;
    SimEngine engine;
    uint32_t wdmChannels;
    uint32_t slowMode;
    uint32_t phoneChip;
    uint16_t value16;
    uint8_t value8;
    uint8_t levelsMove;
    SimUsbStatus usbStatus;
    uint32_t requests; /* since the last reset, whether still in the trace or not */
    uint32_t refusals;
    uint32_t mixerWrites; /* accepted ones */
    uint32_t commands;    /* accepted ones */
    uint8_t firmware[SIM_FIRMWARE_BYTES];
    uint8_t reserved[2];
} SimState;

/* The last command received per opcode and channel. */
typedef struct SimCommand
{
    uint32_t count;
    uint8_t packet[SIM_PACKET_BYTES];
    uint8_t reserved[3];
} SimCommand;

typedef struct SimRequest
{
    uint64_t sequence;  /* from 1 since the last reset */
    uint64_t firstCell; /* number of its first changed cell */
    uint32_t changedCells;
    uint32_t timeMs;
    uint32_t handle; /* 0: opened before the last reset */
    uint32_t code;
    uint32_t inputLength;
    uint32_t outputLength;
    uint32_t returned;
    uint32_t error;
    uint8_t input[SIM_TRACED_INPUT]; /* the rest is zero */
} SimRequest;

/* Heads the records of one SIM_READ_TRACE answer: as many as fit, oldest first. */
typedef struct SimTrace
{
    uint32_t count;
    uint32_t recordBytes;
} SimTrace;

typedef struct SimCell
{
    uint32_t index;
    uint32_t low; /* the double's bits */
    uint32_t high;
} SimCell;

/* Heads the cells of one SIM_READ_CELLS answer, numbered from `first`; `first` is larger than
 * asked for when older ones were overwritten. */
typedef struct SimCells
{
    uint64_t first;
    uint32_t count;
    uint32_t reserved;
} SimCells;

#ifdef __cplusplus
}
#endif

#endif
