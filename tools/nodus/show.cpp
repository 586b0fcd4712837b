// nodus show: a graph file as a picture, laid out by Graphviz.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/graph.h"
#include "nodus/host/graph_drawing.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <spawn.h>

namespace nodus::tools {

namespace {

struct ShowOptions {
    std::string graph, out = "-";
    std::vector<std::string> settings;
    bool opened = false;
};

// A file in memory: whole streams for another program, without pipes that wait for each other.
class Stream {
public:
    explicit Stream(std::string_view text) : m_file(::memfd_create("nodus-show", MFD_CLOEXEC))
    {
        if (m_file < 0)
            throw host::Fault("cannot run dot: " + host::systemError(errno));
        auto file = host::OutputFile::onDescriptor(m_file, "the text for dot");
        file.write(text);
        file.commit();
        ::lseek(m_file, 0, SEEK_SET);
    }
    ~Stream() { ::close(m_file); }
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;

    int descriptor() const { return m_file; }

    std::string text() const
    {
        std::string all;
        std::array<char, 65536> buffer;
        while (true) {
            ssize_t const got =
                ::pread(m_file, buffer.data(), buffer.size(), static_cast<off_t>(all.size()));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                throw host::Fault("cannot read what dot wrote: " + host::systemError(errno));
            if (got == 0)
                return all;
            all.append(buffer.data(), static_cast<std::size_t>(got));
        }
    }

private:
    int m_file;
};

// What the program dot makes of the text.
std::string layOut(std::string_view text, std::string const& format)
{
    Stream const input(text), output({}), complaints({});
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input.descriptor(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output.descriptor(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, complaints.descriptor(), STDERR_FILENO);
    // Signals that this process ignores have their usual meaning there.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t usual;
    ::sigemptyset(&usual);
    ::sigaddset(&usual, SIGPIPE);
    ::sigaddset(&usual, SIGXFSZ);
    ::posix_spawnattr_setsigdefault(&attributes, &usual);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::string program = "dot", option = "-T" + format;
    char* const arguments[] = {program.data(), option.data(), nullptr};
    pid_t child = 0;
    int const error =
        ::posix_spawnp(&child, program.c_str(), &actions, &attributes, arguments, environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw host::Fault("cannot run dot of Graphviz (" + host::systemError(error) +
                          "): install the package graphviz, or write a .dot file with -o");
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return output.text();
    std::string const told = complaints.text();
    throw host::Fault("dot of Graphviz could not draw the graph: " +
                      (WIFSIGNALED(status) ? std::string(::strsignal(WTERMSIG(status)))
                       : told.empty()      ? "exit status " + std::to_string(WEXITSTATUS(status))
                                           : told.substr(0, told.find('\n'))));
}

int show(ShowOptions const& options, Shared const& shared)
{
    Environment const environment(shared);
    host::Diagnostics diagnostics;
    std::string format;
    diagnostics.gather([&] { format = pictureFormat(options.out, {"svg", "png", "pdf", "dot"}); });
    host::GraphSurroundings surroundings{"", nullptr, true, true};
    surroundings.settings = options.settings;
    surroundings.asWritten = !options.opened;
    host::Graph const graph =
        host::readGraph(options.graph, environment.catalogue(), surroundings, diagnostics);
    diagnostics.throwIfAny();

    std::string const text = host::drawGraph(
        graph, std::filesystem::path(host::inputName(options.graph)).stem().string());
    host::writeFile(options.out, format == "dot" ? text : layOut(text, format));
    return 0;
}

}  // namespace

Command addShow(CLI::App& app, Shared const& shared)
{
    CLI::App* const command = app.add_subcommand("show", "Draw a graph as a picture");
    auto const options = std::make_shared<ShowOptions>();
    command->add_option("GRAPH", options->graph, "The graph, a JSON file; - is standard input.")
        ->required();
    command
        ->add_option("-o,--out", options->out,
                     "Where the picture goes: an .svg, .png or .pdf file, or .dot, Graphviz's own\n"
                     "language. It appears whole or not at all.\n"
                     "Without it, or with -: SVG on standard output.")
        ->type_name("FILE");
    addSettings(*command, options->settings);
    command->add_flag(
        "--open", options->opened,
        "Draw all that is evaluated: graphs in the graph by their nodes, parameters by\n"
        "their values, other frames by nodes of their own.");
    command->footer(
        "Boxes are nodes with their ports, types and constants (grey: by default); outlined\n"
        "shapes are the frame, columns, parameters and pixels, filled ones the results. No table\n"
        "is needed.\n"
        "The program dot of Graphviz lays the picture out; only .dot files need none.\n\n"
        "Examples:\n"
        "  nodus show examples/skeleton.json -o skeleton.svg\n"
        "  nodus show examples/drive.json -o drive.png\n\n"
        "Exit status:\n"
        "  0  the picture is written\n"
        "  1  the work failed, for want of memory for instance\n"
        "  2  the graph is wrong, a file cannot be read or written, or dot is missing");
    return {command, [options, &shared] { return show(*options, shared); }};
}

}  // namespace nodus::tools
