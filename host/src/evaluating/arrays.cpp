// Blocks of rows shared out over threads; each reads and writes the caller's arrays where it can.
#include "nodus/host/arrays.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "row_evaluation.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>

namespace nodus::host {

namespace {

using runtime::RowsOfPort;

// An array for a source or an output of the plan.
struct Use {
    std::size_t place;  // in plan.sources, or plan.outputs
    ValueType const* type;
    RowsOfPort rows;

    RowsOfPort from(std::size_t row) const
    {
        return {static_cast<std::byte*>(rows.first) +
                    static_cast<std::ptrdiff_t>(row) * rows.stride,
                rows.stride};
    }
    bool isAligned() const
    {
        auto const alignment = static_cast<std::ptrdiff_t>(type->alignment);
        return reinterpret_cast<std::uintptr_t>(rows.first) % type->alignment == 0 &&
               rows.stride % alignment == 0;
    }
};

std::string isOfType(std::string const& what, ValueType const& type, TypeId given)
{
    return what + " is " + std::string(type.name) + ", its array " +
           std::string(valueType(given).name);
}

std::vector<Use> inputUses(Plan const& plan, std::vector<std::string> const& columns,
                           std::span<InputArray const> arrays, Diagnostics& faults)
{
    std::vector<Use> uses;
    for (std::size_t i = 0; i < plan.sources.size(); ++i) {
        PlanSource const& source = plan.sources[i];
        if (source.kind != Source::Kind::column)
            continue;
        std::string const what = "column " + inQuotes(columns[source.column]);
        auto array = std::ranges::find(arrays, columns[source.column], &InputArray::column);
        // A column that inputs of several types take has an array for each.
        auto const fits = std::ranges::find_if(arrays, [&](InputArray const& each) {
            return each.column == columns[source.column] && each.type == source.type->id;
        });
        if (fits != arrays.end())
            array = fits;
        if (array == arrays.end())
            faults.add(what + " (" + std::string(source.type->name) + ") wants an array");
        else if (array->type != source.type->id)
            faults.add(isOfType(what, *source.type, array->type));
        else
            uses.push_back({i, source.type, {const_cast<void*>(array->first), array->stride}});
    }
    return uses;
}

std::vector<Use> outputUses(Plan const& plan, std::span<OutputArray const> arrays,
                            Diagnostics& faults)
{
    std::vector<Use> uses;
    for (OutputArray const& array : arrays) {
        auto const output = std::ranges::find(plan.outputs, array.output, &PlanOutput::name);
        std::string const what = "output " + inQuotes(array.output);
        if (output == plan.outputs.end())
            faults.add("the graph lists no " + what);
        else if (output->type->id != array.type)
            faults.add(isOfType(what, *output->type, array.type));
        else
            uses.push_back({static_cast<std::size_t>(output - plan.outputs.begin()),
                            output->type,
                            {array.first, array.stride}});
    }
    return uses;
}

// One thread's evaluator, and which arrays it has to copy.
class Worker {
public:
    Worker(Plan const& plan, std::size_t rows, std::vector<Use> const& inputs,
           std::vector<Use> const& outputs, ArrayOptions const& options)
        : m_rows(rows), m_inputs(inputs), m_outputs(outputs), m_options(options),
          m_evaluator(plan, options.log != nullptr ? &m_log : nullptr),
          m_frames(plan.framesPerBlock)
    {
    }

    void evaluate(std::size_t first, std::size_t rows)
    {
        Plan const& plan = m_evaluator.plan();
        std::span const frames = std::span(m_frames).first(rows);
        placeFrames(frames, first);
        for (PlanSource const& source : plan.sources)
            if (source.kind == Source::Kind::pixelX || source.kind == Source::Kind::pixelY)
                placePixels(source, first, rows);
        for (Use const& use : m_inputs) {
            RowsOfPort const array = use.from(first);
            Place const to = plan.sources[use.place].place;
            if (plan.sources[use.place].shift != 0) {
                copyShifted(use, first, rows);
                continue;
            }
            if (use.isAligned() && m_evaluator.bindSource(use.place, array))
                continue;
            moveRows(use.type->id, static_cast<std::byte const*>(array.first), array.stride,
                     m_evaluator.at(to, 0), to.stride, rows);
        }
        m_copied.clear();
        for (Use const& use : m_outputs)
            if (!use.isAligned() || !m_evaluator.bindOutput(use.place, use.from(first)))
                m_copied.push_back(&use);
        m_evaluator.evaluate(frames);
        for (Use const* const use : m_copied) {
            RowsOfPort const array = use->from(first);
            Place const from = plan.outputs[use->place].place;
            moveRows(use->type->id, m_evaluator.at(from, 0), from.stride,
                     static_cast<std::byte*>(array.first), array.stride, rows);
        }
    }

    // Of the block evaluated last.
    void takeLines(TextBuffer& to) { m_log.takeLines(to); }

private:
    // Rows before or after, one by one; those that are not there by their defaults, or the nearest.
    void copyShifted(Use const& use, std::size_t first, std::size_t rows)
    {
        PlanSource const& source = m_evaluator.plan().sources[use.place];
        std::int64_t const last = std::int64_t(m_rows) - 1;
        for (std::size_t i = 0; i < rows; ++i) {
            std::int64_t const wanted = std::int64_t(first + i) + source.shift;
            std::int64_t const row = std::clamp<std::int64_t>(wanted, 0, last);
            auto const* const from =
                row != wanted && source.beyond
                    ? source.beyond->data()
                    : static_cast<std::byte const*>(use.from(static_cast<std::size_t>(row)).first);
            moveRows(source.type->id, from, 0, m_evaluator.at(source.place, i), 0, 1);
        }
    }

    void placeFrames(std::span<std::int32_t> frames, std::size_t first) const
    {
        if (m_options.frames == nullptr) {
            std::iota(
                frames.begin(), frames.end(),
                static_cast<std::int32_t>(m_options.firstFrame + static_cast<std::int64_t>(first)));
            return;
        }
        auto const* const from = static_cast<std::byte const*>(m_options.frames) +
                                 static_cast<std::ptrdiff_t>(first) * m_options.framesStride;
        moveRows(TypeId::Int32, from, m_options.framesStride,
                 reinterpret_cast<std::byte*>(frames.data()), sizeof frames[0], frames.size());
    }

    void placePixels(PlanSource const& source, std::size_t first, std::size_t rows)
    {
        std::size_t const width = m_options.imageWidth;
        for (std::size_t i = 0; i < rows; ++i) {
            std::size_t const pixel = first + i;
            float const centre =
                0.5f + static_cast<float>(source.kind == Source::Kind::pixelX ? pixel % width
                                                                              : pixel / width);
            std::memcpy(m_evaluator.at(source.place, i), &centre, sizeof centre);
        }
    }

    std::size_t m_rows;  // in all
    std::vector<Use> const& m_inputs;
    std::vector<Use> const& m_outputs;
    ArrayOptions const& m_options;
    FrameLog m_log;
    Evaluator m_evaluator;
    std::vector<std::int32_t> m_frames;
    std::vector<Use const*> m_copied;
};

bool hasPixels(Plan const& plan)
{
    return std::ranges::any_of(plan.sources, [](PlanSource const& source) {
        return source.kind == Source::Kind::pixelX || source.kind == Source::Kind::pixelY;
    });
}

}  // namespace

ArrayEvaluator::ArrayEvaluator(Graph const& graph)
    : m_plan(compileRows(graph)), m_columns(graph.columns)
{
}

void ArrayEvaluator::evaluate(std::size_t rows, std::span<InputArray const> inputs,
                              std::span<OutputArray const> outputs,
                              ArrayOptions const& options) const
{
    Diagnostics faults;
    std::vector<Use> const in = inputUses(m_plan, m_columns, inputs, faults);
    std::vector<Use> const out = outputUses(m_plan, outputs, faults);
    std::int64_t const framesLeft =
        std::int64_t{std::numeric_limits<std::int32_t>::max()} - options.firstFrame + 1;
    if (options.frames == nullptr && rows > static_cast<std::uint64_t>(framesLeft))
        faults.add(std::to_string(rows) + " rows from frame " + std::to_string(options.firstFrame) +
                   " on are more than there are frames");
    if (options.imageWidth == 0 && hasPixels(m_plan))
        faults.add("there are pixels only when an image is evaluated");
    faults.throwIfAny();

    std::size_t const inBlock = m_plan.framesPerBlock;
    std::size_t const blocks = (rows + inBlock - 1) / inBlock;
    std::vector<TextBuffer> lines(options.log != nullptr ? blocks : 0);
    auto const evaluateBlock = [&](Worker& worker, std::size_t block) {
        if (options.stop != nullptr && options.stop->load(std::memory_order_relaxed))
            return;
        std::size_t const first = block * inBlock;
        std::size_t const count = std::min(inBlock, rows - first);
        worker.evaluate(first, count);
        if (options.log != nullptr)
            worker.takeLines(lines[block]);
        if (options.done != nullptr)
            options.done->fetch_add(count, std::memory_order_relaxed);
    };
    if (options.threads <= 1) {
        Worker worker(m_plan, rows, in, out, options);
        for (std::size_t block = 0; block < blocks; ++block)
            evaluateBlock(worker, block);
    } else {
        tbb::enumerable_thread_specific<std::unique_ptr<Worker>> workers(
            [&] { return std::make_unique<Worker>(m_plan, rows, in, out, options); });
        tbb::global_control const limit(tbb::global_control::max_allowed_parallelism,
                                        options.threads);
        tbb::task_arena arena(static_cast<int>(options.threads));
        arena.execute([&] {
            tbb::parallel_for(std::size_t{0}, blocks,
                              [&](std::size_t block) { evaluateBlock(*workers.local(), block); });
        });
    }
    for (TextBuffer const& text : lines)
        options.log->append(text.view());
}

}  // namespace nodus::host
