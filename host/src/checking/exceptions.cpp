// The exception flags of the processor beside the values of a call.
#include "exceptions.h"

#include "modules/load.h"

#include <cmath>

namespace nodus::host {

namespace {

// Of a lane that is no number, 0.
double numberAt(std::byte const* lane, TypeId type)
{
    switch (type) {
    case TypeId::Float:
        return load<float>(lane);
    case TypeId::Double:
        return load<double>(lane);
    case TypeId::Int32:
        return load<std::int32_t>(lane);
    default:
        return 0;
    }
}

template <typename Is> bool anyLane(std::vector<Port> const& ports, std::byte const* block, Is is)
{
    for (Port const& port : ports)
        for (std::size_t lane = 0; lane < port.type->laneNames.size(); ++lane)
            if (is(numberAt(block + port.offset + lane * port.type->laneSize, port.type->lane)))
                return true;
    return false;
}

}  // namespace

bool raisedWithoutNeed(ProcessorState const& after, std::vector<Port> const& inputs,
                       std::byte const* in, std::vector<Port> const& outputs, std::byte const* out,
                       bool mayDivideByZero)
{
    if (anyLane(inputs, in, [](double value) { return !(std::abs(value) < 0x1p30); }) ||
        anyLane(outputs, out, [](double value) { return !std::isfinite(value); }))
        return false;
    return after.invalid || (after.dividesByZero && !mayDivideByZero) ||
           (after.overflows && !anyLane(inputs, in, [](double value) {
                return value != 0 && std::abs(value) < 0x1p-30;
            }));
}

}  // namespace nodus::host
