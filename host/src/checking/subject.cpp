// One call, and all that can be seen from it.
#include "subject.h"

#include "exceptions.h"

#include "nodus/runtime/EvaluationScope.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace nodus::host {

namespace {

std::vector<std::shared_ptr<std::string>> const& texts()
{
    static auto const shared = [] {
        std::vector<std::shared_ptr<std::string>> made{nullptr};
        for (std::size_t i = 1; i < sampleTextCount(); ++i)
            // From its characters: the text is not to share them with the one it is compared with.
            made.push_back(
                std::make_shared<std::string>(sampleText(i).data(), sampleText(i).size()));
        return made;
    }();
    return shared;
}

template <typename Gaps> Gaps gapsOf(std::vector<Port> const& ports)
{
    Gaps gaps;
    std::size_t end = 0;
    for (Port const& port : ports) {
        if (port.offset != end)
            gaps.emplace_back(end, port.offset - end);
        end = port.offset + port.type->size;
    }
    return gaps;
}

std::vector<std::size_t> textOffsets(std::vector<Port> const& ports)
{
    std::vector<std::size_t> offsets;
    for (Port const& port : ports)
        if (port.type->id == TypeId::String)
            offsets.push_back(port.offset);
    return offsets;
}

bool isAll(std::byte const* begin, std::byte const* end, std::byte value)
{
    return begin == end ||
           (*begin == value &&
            std::memcmp(begin, begin + 1, static_cast<std::size_t>(end - begin - 1)) == 0);
}

// Whether all but the ports still has its fill.
template <typename Gaps>
bool isKept(Zone const& zone, std::size_t extent, Gaps const& gaps, std::byte fill)
{
    return isAll(zone.begin, zone.block, fill) &&
           isAll(zone.block + extent, zone.begin + zone.size, fill) &&
           std::ranges::all_of(gaps, [&](auto const& gap) {
               return isAll(zone.block + gap.first, zone.block + gap.first + gap.second, fill);
           });
}

std::uintptr_t addressOf(Zone const& zone) { return reinterpret_cast<std::uintptr_t>(zone.block); }

}  // namespace

Caller::Caller(Subject const& subject, CallInProgress& call, std::atomic<std::uint64_t>& beat)
    : m_subject(subject), m_call(call), m_beat(beat), m_in(subject.type->inputExtent),
      m_out(subject.outputExtent()), m_workspace(subject.type->workspaceExtent),
      m_usedWorkspace(subject.type->workspaceExtent),
      m_inputGaps(gapsOf<Gaps>(subject.type->inputs)),
      m_outputGaps(gapsOf<Gaps>(subject.outputs())),
      m_workspaceGaps(gapsOf<Gaps>(subject.type->workspace)),
      m_inputTexts(textOffsets(subject.type->inputs)), m_outputTexts(textOffsets(subject.outputs()))
{
    m_services.log = &m_log;
}

long Caller::strayReferences()
{
    long count = 0;
    for (auto const& text : texts())
        if (text != nullptr)
            count += text.use_count() - 1;
    return count;
}

Checks Caller::run(Placing placing, Outcome& outcome)
{
    auto const place = [&](GuardedPages const& pages, std::size_t extent) {
        return placing.atEnd ? pages.last(extent) : pages.first(extent);
    };
    return runAt(place(m_in, m_subject.type->inputExtent), place(m_out, m_subject.outputExtent()),
                 place(m_workspace, m_subject.type->workspaceExtent), placing, true, outcome);
}

Checks Caller::runWithUsedWorkspace(Outcome& outcome)
{
    constexpr Placing kPlacing{true, std::byte{0x3C}, std::byte{0x3C}};
    Checks const seen =
        runAt(m_in.last(m_subject.type->inputExtent), m_out.last(m_subject.outputExtent()),
              m_usedWorkspace.last(m_subject.type->workspaceExtent), kPlacing, !m_isUsed, outcome);
    m_isUsed = true;
    return seen;
}

void Caller::fillInput(Zone const& in, std::byte fill) const
{
    std::memset(in.begin, std::to_integer<int>(fill), in.size);
    std::memcpy(in.block, m_call.input, m_subject.type->inputExtent);
    for (auto const& [offset, size] : m_inputGaps)
        std::memset(in.block + offset, std::to_integer<int>(fill), size);
    for (std::size_t i = 0; i < m_inputTexts.size(); ++i)
        ::new (in.block + m_inputTexts[i]) String(texts()[m_call.texts[i]]);
}

void Caller::invoke(Zone const& in, Zone const& out, Zone const& workspace, bool initialise)
{
    m_call.inAddress = addressOf(in);
    m_call.outAddress = addressOf(out);
    m_call.workspaceAddress = m_subject.hasWorkspace() ? addressOf(workspace) : 0;
    m_call.calls.fetch_add(1, std::memory_order_relaxed);
    m_beat.fetch_add(1, std::memory_order_relaxed);
    NodeType const& type = *m_subject.type;
    if (m_subject.isInit) {
        type.init(in.block, out.block);
    } else if (type.solve != nullptr) {
        type.solve(in.block, out.block);
    } else {
        if (initialise)
            type.init(in.block, workspace.block);
        type.solveWithWorkspace(in.block, workspace.block, out.block);
    }
}

void Caller::takeOutcome(Zone const& out, Outcome& outcome)
{
    outcome.said.swap(m_log.lines);
    std::size_t const extent = m_subject.outputExtent();
    for (std::size_t const offset : m_outputTexts) {
        auto* const text = std::launder(reinterpret_cast<String*>(out.block + offset));
        outcome.said += static_cast<std::string const&>(*text);
        text->~String();
        std::memset(out.block + offset, 0, sizeof(String));
    }
    outcome.bytes.assign(out.block, out.block + extent);
    for (auto const& [offset, size] : m_outputGaps)
        std::memset(outcome.bytes.data() + offset, 0, size);
}

void Caller::fillOutput(Zone const& out, Placing placing) const
{
    std::memset(out.begin, std::to_integer<int>(placing.outputFill), out.size);
    if (!placing.fillsOutputs)
        for (Port const& port : m_subject.outputs())
            std::memset(out.block + port.offset, 0, port.type->size);
    for (std::size_t const offset : m_outputTexts)
        ::new (out.block + offset) String(placing.fillsOutputs ? texts().back() : nullptr);
}

Checks Caller::runAt(Zone const& in, Zone const& out, Zone const& workspace, Placing placing,
                     bool initialise, Outcome& outcome)
{
    std::byte const fill = placing.outputFill;
    fillInput(in, placing.inputFill);
    m_before.assign(in.begin, in.begin + in.size);
    fillOutput(out, placing);
    if (m_subject.hasWorkspace() && initialise)
        std::memset(workspace.begin, std::to_integer<int>(fill), workspace.size);
    m_log.lines.clear();

    Checks seen;
    auto const note = [&](Check check, bool isFault) {
        if (isFault)
            seen.set(static_cast<std::size_t>(check));
    };
    {
        runtime::EvaluationScope const scope(m_call.frame, &m_services);
        clearExceptions();
        ProcessorState const before = processorState();
        invoke(in, out, workspace, initialise);
        ProcessorState const after = processorState();
        if (!after.hasControlOf(before) || !after.stackIsEmpty)
            restoreProcessor(before);
        note(Check::control, !after.hasControlOf(before));
        note(Check::stack, !after.stackIsEmpty);
        note(Check::exceptions,
             raisedWithoutNeed(after, m_subject.type->inputs, in.block, m_subject.outputs(),
                               out.block, m_subject.type->family->mayDivideByZero));
    }
    note(Check::input, std::memcmp(in.begin, m_before.data(), in.size) != 0);
    note(Check::output, !isKept(out, m_subject.outputExtent(), m_outputGaps, fill));
    note(Check::output,
         m_subject.hasWorkspace() &&
             !isKept(workspace, m_subject.type->workspaceExtent, m_workspaceGaps, fill));
    takeOutcome(out, outcome);
    for (std::size_t i = 0; i < m_inputTexts.size(); ++i) {
        auto* const text = std::launder(reinterpret_cast<String*>(in.block + m_inputTexts[i]));
        note(Check::texts, static_cast<std::string const&>(*text) != sampleText(m_call.texts[i]));
        text->~String();
    }
    return seen;
}

void Caller::repeat(std::size_t count)
{
    Zone const in = m_in.last(m_subject.type->inputExtent);
    Zone const out = m_out.last(m_subject.outputExtent());
    constexpr Placing kPlacing{true, std::byte{0xA5}, std::byte{0xA5}};
    fillInput(in, kPlacing.inputFill);
    fillOutput(out, kPlacing);
    {
        runtime::EvaluationScope const scope(m_call.frame, &m_services);
        ProcessorState const before = processorState();
        for (std::size_t i = 0; i < count; ++i) {
            invoke(in, out, m_workspace.last(m_subject.type->workspaceExtent), i == 0);
            m_log.lines.clear();
        }
        restoreProcessor(before);
    }
    for (auto const& [zone, offsets] : {std::pair(&in, &m_inputTexts), {&out, &m_outputTexts}})
        for (std::size_t const offset : *offsets)
            std::launder(reinterpret_cast<String*>(zone->block + offset))->~String();
}

}  // namespace nodus::host
