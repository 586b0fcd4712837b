// The same bits everywhere: digests of this compiler's builds beside each other, and beside those
// that are kept. After a change of results that is meant to be one:
//   cmake/build.sh portable && build/portable/bin/nodus digest >tests/digests/portable.txt
#include "support/command.h"

#include <fstream>
#include <map>

namespace {

struct Build {
    std::string name, file;

    bool isPortable() const { return DIGEST_ALL_PORTABLE || name == "nodusmath_portable"; }
    bool canRun() const
    {
        return name != "nodusmath_v3" ||
               (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
    }
};
Build const kBuilds[] = {DIGEST_BUILDS};  // this build's own module first
Build const& kOwn = kBuilds[0];

using Digests = std::map<std::string, std::string>;  // by family: group and digest

Digests read(std::istream&& text)
{
    Digests digests;
    for (std::string family, rest; text >> family && std::getline(text, rest);)
        if (family != "all" && family != "#")
            digests[family] = rest;
    EXPECT_FALSE(digests.empty());
    return digests;
}

bool dependsOn(std::string const& group, std::string const& line)
{
    return line.find(' ' + group + ' ') != line.npos;
}

nodus::test::Finished digest(Build const& build, std::string const& seed = "1",
                             std::string const& emulator = "")
{
    return nodus::test::run(emulator + " '" DIGEST_COMMAND "' --module '" + build.file +
                            "' digest --seed '" + seed + "'");
}

Digests const& own()
{
    static Digests const digests = read(std::istringstream(digest(kOwn).out));
    return digests;
}

}  // namespace

// With each other in all families; with what is kept in those that depend on nothing, or in all
// when the build is portable.
TEST(Digest, BuildsAgree)
{
    Digests kept = read(std::ifstream(DIGEST_KEPT));
    for (Build const& build : kBuilds) {
        if (!build.canRun())
            continue;
        Digests const digests = read(std::istringstream(digest(build).out));
        EXPECT_EQ(digests.size(), kept.size()) << build.name;
        for (auto const& [family, line] : digests) {
            // The group alone, where the digest is this machine's.
            bool const isKept = build.isPortable() || dependsOn("exact", line);
            std::size_t const end = isKept ? line.npos : line.rfind(' ');
            EXPECT_EQ(line.substr(0, end), kept[family].substr(0, end))
                << family << " in " << build.name;
            EXPECT_TRUE(line == own().at(family) || build.isPortable() != kOwn.isPortable())
                << family << " in " << build.name;
        }
    }
}

#ifdef DIGEST_EMULATOR
// An emulator estimates in its own way, and the C library takes other functions for a processor of
// 2008. Nothing else may differ, and in a portable build nothing at all.
TEST(Digest, AnotherProcessorAgrees)
{
    auto const run = digest(kOwn, "1", DIGEST_EMULATOR " -cpu Nehalem");
    for (auto const& [family, line] : read(std::istringstream(run.out)))
        EXPECT_TRUE(
            line == own().at(family) ||
            (!kOwn.isPortable() && (dependsOn("estimate", line) || dependsOn("libm", line))))
            << family;
}
#endif

// Of every family, so that none is digested without its outputs.
TEST(Digest, AnotherSeedIsAnotherDigest)
{
    for (auto const& [family, line] : read(std::istringstream(digest(kOwn, "2").out)))
        EXPECT_NE(line, own().at(family)) << family;
    for (char const* const wrong : {"", "x", "-1", "1.5", "4294967296"})
        EXPECT_EQ(digest(kOwn, wrong).exitStatus, 2) << wrong;
}
