// nodus: evaluates graphs of math nodes, and tells what nodes there are.
#include "environment.h"
#include "progress.h"
#include "usage.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/input_file.h"
#include "nodus/host/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <new>

namespace {

constexpr int kWorkFailed = 1;
constexpr int kWrongInput = 2;
constexpr int kClosedPipe = 128 + SIGPIPE;  // the status that a shell makes of the signal

void complain(std::string const& line) { nodus::tools::tellOnStandardError("nodus: " + line); }

void onInterrupt(int signal)
{
    nodus::host::removeUnfinishedFiles();
    if (nodus::tools::Progress::isShown()) {
        [[maybe_unused]] ssize_t const written = ::write(STDERR_FILENO, "\r\x1b[K", 4);
    }
    // The default action now ends the process, and whoever started it sees why.
    ::raise(signal);
}

void prepareProcess()
{
    // A file opened later must not become standard output by taking its number.
    for (int descriptor = 0; descriptor <= 2; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) != descriptor)
            std::_Exit(kWorkFailed);
    // A pipe without a reader ends the work in order, a limit on file sizes becomes a message.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        // Who starts it in the background with nohup wants it to stay.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

// As other filters end when their reader has enough: quietly, and of the signal.
int endAtClosedPipe()
{
    std::signal(SIGPIPE, SIG_DFL);
    ::raise(SIGPIPE);
    return kClosedPipe;  // who started the command has blocked the signal
}

// Of a command that was given a graph, what that graph can be given, behind the help.
void help(CLI::App& app, nodus::tools::Shared const& shared)
{
    nodus::tools::print(app.help());
    for (CLI::App* const command : app.get_subcommands()) {
        CLI::Option const* const graph = command->get_option_no_throw("GRAPH");
        std::string const path =
            graph != nullptr && graph->count() != 0 ? graph->results().front() : "";
        if (path.empty() || nodus::host::isStandardStream(path))
            continue;
        nodus::tools::Environment const environment(shared);
        nodus::tools::print("\nThe graph " +
                            nodus::tools::describeGraph(path, environment.catalogue()));
    }
}

int run(int argc, char** argv)
{
    CLI::App app("Evaluates graphs of math nodes over frames.", "nodus");
    app.formatter(nodus::tools::helpFormatter());
    app.set_version_flag("--version", "nodus " NODUS_VERSION, "Print the version and leave.");
    app.set_help_flag("-h,--help", "Print this help and leave.");
    app.require_subcommand(1);
    app.footer(
        "Examples:\n"
        "  nodus eval examples/flipbook.json --frames 0:60:5\n"
        "  nodus show examples/drive.json -o drive.svg\n"
        "  nodus list rotate vector\n"
        "  nodus describe Slerp\n"
        "  nodus call Add_Float3 a=1,2,3 b=10,20,30\n\n"
        "Exit status:\n"
        "  0  the work is done\n"
        "  1  the work failed, or nodus check found a fault\n"
        "  2  the command line or a file is wrong: a line on standard error for each fault\n\n"
        "nodus COMMAND --help, or nodus help COMMAND, tells more about a command.");

    nodus::tools::Shared shared;
    app.add_option(
           "--module", shared.modules,
           "A module to load, with its catalogue beside it, besides the module of this\n"
           "installation, libnodusmath.so; one of that name is loaded in its place. It may be\n"
           "given more than once, and graphs may use nodes of all.")
        ->type_name("FILE")
        ->take_all();

    nodus::tools::Command const commands[] = {
        nodus::tools::addEval(app, shared),   nodus::tools::addMerge(app),
        nodus::tools::addNewGraph(app),       nodus::tools::addNewModule(app),
        nodus::tools::addPlot(app, shared),   nodus::tools::addShow(app, shared),
        nodus::tools::addList(app, shared),   nodus::tools::addDescribe(app, shared),
        nodus::tools::addCall(app, shared),   nodus::tools::addTest(app, shared),
        nodus::tools::addCheck(app, shared),  nodus::tools::addDigest(app, shared),
        nodus::tools::addHelp(app),           nodus::tools::addVersion(app),
        nodus::tools::addManual(app, shared),
    };
    for (auto const& command : commands) {
        command.app->fallthrough()->set_help_flag("-h,--help", "Print this help and leave.");
        if (!command.app->get_group().empty())
            command.app->group("Commands");
    }

    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const&) {
        help(app, shared);
        return 0;
    } catch (CLI::CallForVersion const&) {
        nodus::tools::print(app.version() + "\n");
        return 0;
    } catch (CLI::ParseError const& error) {
        throw nodus::host::Fault(nodus::tools::usageFaults(app, error));
    }
    for (auto const& command : commands)
        if (command.app->parsed())
            return command.run();
    return kWrongInput;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        prepareProcess();
        return run(argc, argv);
    } catch (nodus::host::ClosedPipe const&) {
        return endAtClosedPipe();
    } catch (nodus::host::Fault const& fault) {
        nodus::tools::tellOnStandardError(fault);
        return kWrongInput;
    } catch (std::bad_alloc const&) {
        complain("out of memory");
    } catch (std::exception const& error) {
        complain(std::string("the work failed: ") + error.what());
    }
    return kWorkFailed;
}
