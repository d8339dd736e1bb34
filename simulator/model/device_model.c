#include "simulator/model/model_internal.h"

static const SimState defaults = {
    .engineState = SIM_ENGINE_RUNNING,
    .engine = {.sampleRate = 44100, .bufferSize = 192, .usbLatency = 24},
    .wdmChannels = 2,
    .firmware = {'1', '.', '0', '.', '7', 0, 0, 0, 0, 0},
};

/* What a device forgets without power. Presets (firmware, engine values, levels, status) stay. */
static void powerUp(SimModel* model)
{
    model->state.engineState = defaults.engineState;
    model->state.wdmChannels = defaults.wdmChannels;
    model->state.slowMode = 0;
    model->state.phoneChip = 0;
    simZero(model->mixer, sizeof model->mixer);
    simZero(model->commands, sizeof model->commands);
    model->commandCount = 0;
}

static void reset(SimModel* model)
{
    simCopy(&model->state, &defaults, sizeof defaults);
    ++model->generation;
    model->resetGeneration = model->generation;
    simZero(model->levels, sizeof model->levels);
    model->faultCount = 0;
    model->requestTotal = 0;
    model->clearedUpTo = 0;
    model->cellTotal = 0;
    powerUp(model);
}

void simInitialise(SimModel* model)
{
    model->generation = 0;
    reset(model);
}

static uint32_t handleNumber(const SimModel* model, SimHandle handle)
{
    const uint32_t generation = (uint32_t)(handle >> 32);
    return generation < model->resetGeneration ? 0 : (uint32_t)handle;
}

SimHandle simOpen(SimModel* model)
{
    ++model->state.openHandles;
    ++model->state.openedHandles;
    return (SimHandle)model->generation << 32 | model->state.openedHandles;
}

void simClose(SimModel* model, SimHandle handle)
{
    if (handleNumber(model, handle) != 0)
        --model->state.openHandles;
}

static SimAnswer failure(uint32_t error)
{
    const SimAnswer answer = {error, 0, 0};
    return answer;
}

SimAnswer simRequest(SimModel* model, SimHandle handle, const SimCall* call)
{
    SimRequest* const record = simTraceRequest(model, handleNumber(model, handle), call);
    SimAnswer answer;
    if (!model->state.plugged || (uint32_t)(handle >> 32) != model->generation) {
        answer = failure(SIM_ERROR_DEVICE_NOT_CONNECTED);
    } else {
        const SimFate fate = simTakeFaults(model, call->code);
        answer = fate.error != SIM_ERROR_NONE ? failure(fate.error) : simExecute(model, call);
        if (answer.returned > fate.largestAnswer)
            answer.returned = fate.largestAnswer;
        answer.delayMs = fate.delayMs;
    }
    record->error = answer.error;
    record->returned = answer.returned;
    ++model->state.requests;
    if (answer.error != SIM_ERROR_NONE)
        ++model->state.refusals;
    return answer;
}

static uint32_t plug(SimModel* model, uint32_t productId, uint32_t bus)
{
    if (bus >= SIM_BUSES)
        return SIM_ERROR_INVALID_PARAMETER;
    ++model->generation;
    model->state.plugged = 1;
    model->state.productId = productId;
    model->state.bus = bus;
    powerUp(model);
    return SIM_ERROR_NONE;
}

static uint32_t setLevels(SimModel* model, const uint8_t* input)
{
    const uint32_t first = simLoad32(input);
    const uint32_t count = simLoad32(input + 4);
    if (first > SIM_LEVELS || count > SIM_LEVELS - first)
        return SIM_ERROR_INVALID_PARAMETER;
    for (uint32_t i = 0; i < count; ++i)
        model->levels[first + i] = (int32_t)simLoad32(input + 8 + 4 * (size_t)i);
    return SIM_ERROR_NONE;
}

/* The control requests without an answer, all of exact size. */
static uint32_t applyControl(SimModel* model, const SimCall* call)
{
    const uint8_t* const input = call->input;
    switch (call->code) {
    case SIM_RESET:
        reset(model);
        return SIM_ERROR_NONE;
    case SIM_PLUG:
        return plug(model, simLoad32(input), simLoad32(input + 4));
    case SIM_UNPLUG:
        model->state.plugged = 0;
        return SIM_ERROR_NONE;
    case SIM_ADD_FAULT: {
        const SimFault fault = {simLoad32(input), simLoad32(input + 4), simLoad32(input + 8),
                                simLoad32(input + 12), simLoad32(input + 16)};
        return simAddFault(model, &fault);
    }
    case SIM_CLEAR_FAULTS:
        model->faultCount = 0;
        return SIM_ERROR_NONE;
    case SIM_SET_LEVELS:
        return setLevels(model, input);
    case SIM_MOVE_LEVELS:
        model->state.levelsMove = simLoad32(input) != 0;
        return SIM_ERROR_NONE;
    case SIM_SET_USB_STATUS:
        simCopy(&model->state.usbStatus, input, sizeof model->state.usbStatus);
        return SIM_ERROR_NONE;
    case SIM_SET_FIRMWARE:
        simCopy(model->state.firmware, input, sizeof model->state.firmware);
        return SIM_ERROR_NONE;
    case SIM_SET_ENGINE:
        simCopy(&model->state.engine, input, sizeof model->state.engine);
        return SIM_ERROR_NONE;
    default: /* SIM_CLEAR_TRACE, the last row of the table below */
        simClearTrace(model, simLoad64(input));
        return SIM_ERROR_NONE;
    }
}

static SimAnswer copyOut(const SimCall* call, const void* data, size_t length)
{
    if (call->outputLength < length)
        return failure(SIM_ERROR_INSUFFICIENT_BUFFER);
    simCopy(call->output, data, length);
    const SimAnswer answer = {SIM_ERROR_NONE, (uint32_t)length, 0};
    return answer;
}

static const struct
{
    uint32_t code;
    uint32_t inputLength;
} controls[] = {
    {SIM_RESET, 0},
    {SIM_PLUG, sizeof(SimPlug)},
    {SIM_UNPLUG, 0},
    {SIM_ADD_FAULT, sizeof(SimFault)},
    {SIM_CLEAR_FAULTS, 0},
    {SIM_SET_LEVELS, sizeof(SimLevels)},
    {SIM_MOVE_LEVELS, 4},
    {SIM_SET_USB_STATUS, sizeof(SimUsbStatus)},
    {SIM_SET_FIRMWARE, SIM_FIRMWARE_BYTES},
    {SIM_SET_ENGINE, sizeof(SimEngine)},
    {SIM_READ_STATE, 0},
    {SIM_READ_MIXER, 0},
    {SIM_READ_COMMANDS, 0},
    {SIM_READ_TRACE, 8},
    {SIM_READ_CELLS, 8},
    {SIM_CLEAR_TRACE, 8},
};

SimAnswer simControl(SimModel* model, const SimCall* call)
{
    size_t row = 0;
    while (row < sizeof controls / sizeof *controls && controls[row].code != call->code)
        ++row;
    if (row == sizeof controls / sizeof *controls)
        return failure(SIM_ERROR_INVALID_FUNCTION);
    if (call->inputLength != controls[row].inputLength)
        return failure(SIM_ERROR_INVALID_PARAMETER);
    switch (call->code) {
    case SIM_READ_STATE:
        return copyOut(call, &model->state, sizeof model->state);
    case SIM_READ_MIXER:
        return copyOut(call, model->mixer, sizeof model->mixer);
    case SIM_READ_COMMANDS:
        return copyOut(call, model->commands, model->commandCount * sizeof *model->commands);
    case SIM_READ_TRACE:
        return simReadTrace(model, call);
    case SIM_READ_CELLS:
        return simReadCells(model, call);
    default:
        return failure(applyControl(model, call));
    }
}
