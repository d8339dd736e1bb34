#ifndef QUORVEL_SIMULATOR_DEVICE_MODEL_H
#define QUORVEL_SIMULATOR_DEVICE_MODEL_H

/* The simulated interface together with its driver, for a host that owns the device objects. It
 * needs no library, no allocation and no floating point, so that a kernel-mode host can hold it
 * in static memory. Not thread-safe: the host makes one call at a time. */

#include "simulator/model/simulator_protocol.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SIM_TRACE_REQUESTS 8192u
#define SIM_TRACE_CELLS 262144u
#define SIM_FAULTS 64u
#define SIM_COMMANDS 256u

typedef struct SimModel
{
    SimState state;
    uint32_t generation;      /* grows with every plugging, so that older handles stay dead */
    uint32_t resetGeneration; /* handles of an older one are no longer counted */
    int32_t levels[SIM_LEVELS];
    uint64_t mixer[SIM_MIXER_CELLS]; /* the doubles' bits */
    SimCommand commands[SIM_COMMANDS];
    uint32_t commandCount;
    SimFault faults[SIM_FAULTS];
    uint32_t faultCount;
    SimRequest requests[SIM_TRACE_REQUESTS];
    uint64_t requestTotal; /* the newest sequence number */
    uint64_t clearedUpTo;
    SimCell cells[SIM_TRACE_CELLS];
    uint64_t cellTotal;
} SimModel;

/* One open handle on the device, as the host keeps it. */
typedef uint64_t SimHandle;

/* A buffered request. `input` and `output` may be the same memory, as in a kernel. */
typedef struct SimCall
{
    uint32_t timeMs; /* the host's clock */
    uint32_t code;
    const uint8_t* input;
    uint32_t inputLength;
    uint8_t* output;
    uint32_t outputLength;
} SimCall;

typedef struct SimAnswer
{
    uint32_t error;    /* a Windows error number, 0 = success */
    uint32_t returned; /* bytes stored in the output; none after an error */
    uint32_t delayMs;  /* how long the host holds the answer back */
} SimAnswer;

/* Brings the model to its defaults: unplugged, firmware 1.0.7, 44100 Hz, 192 samples, 24 frames,
 * levels and counters zero. Must be called once before anything else. */
void simInitialise(SimModel* model);

/* Opens and closes a handle on the plugged device. */
SimHandle simOpen(SimModel* model);
void simClose(SimModel* model, SimHandle handle);

/* Answers one request of a program on that handle. */
SimAnswer simRequest(SimModel* model, SimHandle handle, const SimCall* call);

/* Answers one request on the control door. Afterwards the host publishes the device path that
 * `state.plugged` and `state.bus` ask for. */
SimAnswer simControl(SimModel* model, const SimCall* call);

#ifdef __cplusplus
}
#endif

#endif
