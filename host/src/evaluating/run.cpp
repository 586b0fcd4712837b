// The pipeline: one reader in order, any number of workers, one writer in order.
#include "nodus/host/run.h"

#include "nodus/host/evaluator.h"
#include "nodus/host/frame_log.h"
#include "tables/npz_writer.h"
#include "tables/row_window.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>

namespace nodus::host {

namespace {

constexpr std::size_t kMostFaults = 20;

// A kernel over rows does about this many rows in the time of one call of a kernel.
constexpr std::size_t kRowsAreFaster = 8;

// A batch with so many characters of a table is not made longer.
constexpr std::size_t kLongBatch = std::size_t{64} * 1024;

// A stretch of frames on its way from the reader to the writer.
struct Batch {
    // Held by the stage that works on it. The pipeline keeps the stages apart as well, but by means
    // that the thread sanitizer cannot see; a lock for each batch costs nothing.
    std::mutex turn;
    std::vector<std::int32_t> frames;
    RowsOfFrames table;
    TextBuffer results, log;
    Diagnostics faults;
    std::optional<Summary> summary;
    std::string readerFault;  // comes behind those of the rows that were read

    void clear()
    {
        frames.clear();
        table.clear();
        results.clear();
        log.clear();
        faults = {};
        summary.reset();
        readerFault.clear();
    }
};

// One thread's own.
struct Worker {
    FrameLog log;
    Evaluator evaluator;
    explicit Worker(Plan const& plan) : evaluator(plan, &log) {}
};

class Run {
public:
    Run(Plan const& plan, RunOptions const& options)
        : m_plan(plan), m_options(options), m_writer(plan, options.format),
          m_workers([&plan] { return std::make_unique<Worker>(plan); }),
          m_batches(2 * options.threads + 2)
    {
        if (options.table != nullptr) {
            m_parser.emplace(*options.table, plan);
            if (m_parser->isShifted())
                m_window.emplace(*options.table, m_parser->shifts());
        }
        if (options.summary != nullptr)
            m_noResults = *options.summary;
        // Enough work to make handing over cheap, little enough to bound memory and latency.
        std::size_t const work =
            plan.steps.size() + plan.rowSteps.size() / kRowsAreFaster + 4 * plan.outputs.size() + 4;
        std::size_t const byWork = std::size_t{256} * 1024 / work;
        std::size_t const bySize = std::size_t{512} * 1024 / m_writer.typicalLine();
        m_batchFrames = std::clamp(std::min(byWork, bySize), std::size_t{1}, std::size_t{2048});
        // Whole blocks, where there is more than one.
        if (m_batchFrames > plan.framesPerBlock)
            m_batchFrames -= m_batchFrames % plan.framesPerBlock;
    }

    // Whatever the workers wrote is seen by who destroys it.
    ~Run()
    {
        std::scoped_lock const readerAndWriter(m_readerTurn, m_writerTurn);
        for (Batch& batch : m_batches)
            std::scoped_lock const lock(batch.turn);
    }

    std::uint64_t run()
    {
        if (m_options.table != nullptr && m_options.frames && m_options.frames->first < 0)
            throw Fault(outsideTable(m_options.frames->first));
        bool const isArray = m_options.format == ResultFormat::npy;
        if (isArray && !m_options.results->mayRewrite())
            throw Fault(m_options.results->name() +
                        ": wants a file, since the number of rows is written when all are");
        if (m_options.format == ResultFormat::npz)
            m_archive.emplace(m_writer.columns(), *m_options.results);
        m_options.results->write(m_writer.header());
        tbb::global_control const limit(tbb::global_control::max_allowed_parallelism,
                                        m_options.threads);
        tbb::task_arena arena(static_cast<int>(m_options.threads));
        arena.execute([&] {
            tbb::parallel_pipeline(
                m_batches.size(),
                tbb::make_filter<void, Batch*>(
                    tbb::filter_mode::serial_in_order,
                    [&](tbb::flow_control& control) { return read(control); }) &
                    tbb::make_filter<Batch*, Batch*>(tbb::filter_mode::parallel,
                                                     [&](Batch* batch) {
                                                         evaluate(*batch);
                                                         return batch;
                                                     }) &
                    tbb::make_filter<Batch*, void>(tbb::filter_mode::serial_in_order,
                                                   [&](Batch* batch) { write(*batch); }));
        });
        std::scoped_lock const writer(m_writerTurn);
        m_faults.throwIfAny();
        if (isArray)
            m_options.results->rewrite(0, m_writer.header(m_done));
        if (m_archive)
            m_archive->finish();
        return m_done;
    }

private:
    // At most as many batches are on their way as there are slots, and they end in order: the slot
    // of the next one is free.
    Batch* read(tbb::flow_control& control)
    {
        std::scoped_lock const reader(m_readerTurn);
        Batch& batch = m_batches[m_nextBatch++ % m_batches.size()];
        std::scoped_lock const lock(batch.turn);
        batch.clear();
        while (batch.frames.size() < m_batchFrames && !m_isRead && readFrames(batch)) {
        }
        if (batch.frames.empty() && batch.readerFault.empty())
            control.stop();
        return &batch;
    }

    // Whether the batch has room for more.
    bool readFrames(Batch& batch)
    {
        FrameRange const range =
            m_options.frames
                ? *m_options.frames
                : FrameRange{0, m_options.table != nullptr ? std::numeric_limits<int>::max() : 0};
        if (m_index == range.count() || m_hasEnoughFaults) {
            m_isRead = true;
            if (m_options.table != nullptr && !m_options.frames && m_options.table->skipRow())
                batch.readerFault =
                    m_options.table->name() + ": has more rows than there are frames";
            return false;
        }
        std::int32_t const frame = range.at(m_index);
        std::size_t count = 1;
        if (m_options.table != nullptr) {
            std::uint64_t const most =
                range.step != 1 ? 1
                                : std::min<std::uint64_t>(range.count() - m_index,
                                                          m_batchFrames - batch.frames.size());
            count = readRows(batch, frame, most);
        }
        if (count == 0) {
            m_isRead = true;
            if (m_options.frames)
                batch.readerFault = outsideTable(frame);
            return false;
        }
        for (; count != 0; --count)
            batch.frames.push_back(range.at(m_index++));
        return batch.table.rows.text.size() < kLongBatch;
    }

    // Of that frame and those behind it; how many.
    std::size_t readRows(Batch& batch, std::int32_t frame, std::size_t most)
    {
        if (m_window)
            return m_window->add(frame, batch.table) ? 1 : 0;
        TableReader& table = *m_options.table;
        while (table.rowsRead() < static_cast<std::uint64_t>(frame))
            if (!table.skipRow())
                return 0;
        return table.readRows(batch.table.rows, most);
    }

    std::string outsideTable(std::int32_t frame) const
    {
        std::uint64_t const rows = m_options.table->rowsRead();
        std::string const known = frame < 0   ? "its rows count from 0"
                                  : rows == 0 ? "it has no rows"
                                              : "its rows are 0 to " + std::to_string(rows - 1);
        return "frame " + std::to_string(frame) + " is outside " + m_options.table->name() + ": " +
               known;
    }

    void evaluate(Batch& batch)
    {
        std::scoped_lock const lock(batch.turn);
        Worker& worker = *m_workers.local();
        std::size_t const inBlock = m_plan.framesPerBlock;
        batch.summary = m_noResults;
        for (std::size_t first = 0; first < batch.frames.size(); first += inBlock) {
            std::size_t const count = std::min(inBlock, batch.frames.size() - first);
            for (std::size_t i = 0; i < count && m_parser; ++i)
                parseRows(batch, first + i, worker.evaluator, i);
            // Nothing of this batch, nor of a later one, will be seen.
            if (!batch.faults.empty() || m_isFaulty.load(std::memory_order_relaxed))
                continue;
            std::span const frames = std::span(batch.frames).subspan(first, count);
            worker.evaluator.evaluate(frames);
            worker.log.takeLines(batch.log);
            if (batch.summary)
                batch.summary->add(worker.evaluator, frames);
            for (std::size_t i = 0; i < count; ++i)
                m_writer.append(worker.evaluator, i, frames[i], batch.results);
        }
        if (!batch.readerFault.empty())
            batch.faults.add(batch.readerFault);
    }

    // What frame number index of the batch, and i of the evaluator, reads of the table.
    void parseRows(Batch& batch, std::size_t index, Evaluator& evaluator, std::size_t i) const
    {
        TableRows const& rows = batch.table.rows;
        if (!m_window)
            return m_parser->parse(rows.row(index), rows.rows[index].line, evaluator, i,
                                   batch.faults);
        std::size_t const shifts = m_parser->shifts().size();
        for (std::size_t shift = 0; shift < shifts; ++shift) {
            auto const [row, isBeyond] = batch.table.uses[index * shifts + shift];
            m_parser->parse(rows.row(row), rows.rows[row].line, evaluator, i, batch.faults, shift);
            if (isBeyond)
                m_parser->storeDefaults(evaluator, i, shift);
        }
    }

    void write(Batch& batch)
    {
        std::scoped_lock const lock(m_writerTurn, batch.turn);
        m_isFaulty = m_isFaulty || !batch.faults.empty();
        if (m_isFaulty) {
            collect(batch.faults);
            return;
        }
        if (m_archive)
            m_archive->write(batch.results.view());
        else
            m_options.results->write(batch.results.view());
        if (m_options.log != nullptr && batch.log.size() != 0) {
            if (m_options.beforeLog)
                m_options.beforeLog();
            m_options.log->write(batch.log.view());
            if (m_options.beforeLog)
                m_options.log->flush();
        }
        if (batch.summary)
            m_options.summary->add(*batch.summary);
        m_done += batch.frames.size();
        if (m_options.progress)
            m_options.progress(m_done);
    }

    void collect(Diagnostics const& faults)
    {
        for (std::string const& line : faults.lines()) {
            if (m_hasEnoughFaults)
                return;
            // Of a row that several frames read.
            if (m_window && std::ranges::find(m_faults.lines(), line) != m_faults.lines().end())
                continue;
            m_faults.add(line);
            if (m_faults.lines().size() == kMostFaults) {
                m_faults.add("these are the first " + std::to_string(kMostFaults) +
                             " faults of the table; there may be more");
                m_hasEnoughFaults = true;
            }
        }
    }

    Plan const& m_plan;
    RunOptions const& m_options;
    ResultWriter m_writer;
    std::optional<Summary> m_noResults;  // what batches begin with
    std::optional<TableParser> m_parser;
    tbb::enumerable_thread_specific<std::unique_ptr<Worker>> m_workers;
    std::vector<Batch> m_batches;
    std::size_t m_batchFrames = 1;
    // The reader's own.
    std::mutex m_readerTurn;
    std::size_t m_nextBatch = 0;
    std::uint64_t m_index = 0;
    std::optional<RowWindow> m_window;
    bool m_isRead = false;
    // The writer's own, except that the others may look whether it still makes sense to go on.
    std::mutex m_writerTurn;
    std::optional<NpzWriter> m_archive;
    std::uint64_t m_done = 0;
    Diagnostics m_faults;
    std::atomic<bool> m_isFaulty = false, m_hasEnoughFaults = false;
};

}  // namespace

std::uint64_t run(Plan const& plan, RunOptions const& options) { return Run(plan, options).run(); }

}  // namespace nodus::host
