#include "simulator/model/model_internal.h"

static void removeFault(SimModel* model, uint32_t position)
{
    --model->faultCount;
    for (uint32_t i = position; i < model->faultCount; ++i)
        model->faults[i] = model->faults[i + 1];
}

static void takeBack(SimModel* model, uint32_t kind, uint32_t code)
{
    uint32_t i = 0;
    while (i < model->faultCount) {
        if (model->faults[i].kind == kind && model->faults[i].code == code)
            removeFault(model, i);
        else
            ++i;
    }
}

uint32_t simAddFault(SimModel* model, const SimFault* fault)
{
    if (fault->kind < SIM_FAULT_FAIL || fault->kind > SIM_FAULT_SHORT)
        return SIM_ERROR_INVALID_PARAMETER;
    if (fault->count == 0) {
        takeBack(model, fault->kind, fault->code);
        return SIM_ERROR_NONE;
    }
    if (fault->kind == SIM_FAULT_FAIL && fault->value == SIM_ERROR_NONE)
        return SIM_ERROR_INVALID_PARAMETER;
    if (model->faultCount == SIM_FAULTS)
        return SIM_ERROR_NO_SYSTEM_RESOURCES;
    model->faults[model->faultCount] = *fault;
    ++model->faultCount;
    return SIM_ERROR_NONE;
}

SimFate simTakeFaults(SimModel* model, uint32_t code)
{
    SimFate fate = {SIM_ERROR_NONE, 0, 0xFFFFFFFFu};
    uint32_t taken = 0; /* one bit per kind: a request meets at most one fault of each */
    uint32_t i = 0;
    while (i < model->faultCount) {
        SimFault* const fault = &model->faults[i];
        ++i;
        if (fault->code != 0 && fault->code != code)
            continue;
        if (fault->skip > 0) {
            --fault->skip;
            continue;
        }
        if ((taken & 1u << fault->kind) != 0)
            continue;
        taken |= 1u << fault->kind;
        if (fault->kind == SIM_FAULT_FAIL)
            fate.error = fault->value;
        else if (fault->kind == SIM_FAULT_DELAY)
            fate.delayMs = fault->value;
        else
            fate.largestAnswer = fault->value;
        if (fault->count != SIM_FOREVER && --fault->count == 0)
            removeFault(model, --i);
    }
    return fate;
}
