#ifndef QUORVEL_SIMULATOR_MODEL_INTERNAL_H
#define QUORVEL_SIMULATOR_MODEL_INTERNAL_H

#include "simulator/model/device_model.h"

/* Little-endian access that needs no alignment. */
static inline uint32_t simLoad16(const uint8_t* bytes)
{
    return (uint32_t)bytes[0] | (uint32_t)bytes[1] << 8;
}

static inline uint32_t simLoad32(const uint8_t* bytes)
{
    return simLoad16(bytes) | simLoad16(bytes + 2) << 16;
}

static inline uint64_t simLoad64(const uint8_t* bytes)
{
    return (uint64_t)simLoad32(bytes) | (uint64_t)simLoad32(bytes + 4) << 32;
}

static inline void simStore16(uint8_t* bytes, uint32_t value)
{
    bytes[0] = (uint8_t)value;
    bytes[1] = (uint8_t)(value >> 8);
}

static inline void simStore32(uint8_t* bytes, uint32_t value)
{
    simStore16(bytes, value);
    simStore16(bytes + 2, value >> 16);
}

static inline void simStore64(uint8_t* bytes, uint64_t value)
{
    simStore32(bytes, (uint32_t)value);
    simStore32(bytes + 4, (uint32_t)(value >> 32));
}

static inline void simCopy(void* to, const void* from, size_t length)
{
    uint8_t* target = (uint8_t*)to;
    const uint8_t* source = (const uint8_t*)from;
    for (size_t i = 0; i < length; ++i)
        target[i] = source[i];
}

static inline void simZero(void* data, size_t length)
{
    uint8_t* target = (uint8_t*)data;
    for (size_t i = 0; i < length; ++i)
        target[i] = 0;
}

/* The level of a slot at that moment while the levels move: each slot rises and falls between
 * silence and full scale in a period of its own. */
int32_t simMovingLevel(uint32_t slot, uint32_t timeMs);

/* What befalls one request: its faults are looked up and used up. */
typedef struct SimFate
{
    uint32_t error;
    uint32_t delayMs;
    uint32_t largestAnswer;
} SimFate;

SimFate simTakeFaults(SimModel* model, uint32_t code);
uint32_t simAddFault(SimModel* model, const SimFault* fault);

/* Files the request and, for a mixer table, the cells that differ from the accepted one. The
 * record is complete but for its result. */
SimRequest* simTraceRequest(SimModel* model, uint32_t handle, const SimCall* call);

SimAnswer simReadTrace(const SimModel* model, const SimCall* call);
SimAnswer simReadCells(const SimModel* model, const SimCall* call);
void simClearTrace(SimModel* model, uint64_t upTo);

/* Carries out a request that is alive and not hit by a fault. */
SimAnswer simExecute(SimModel* model, const SimCall* call);

#endif
