// The command line tool from outside: exit status, output streams, and which files it leaves.
#include "MeshStatistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace
{
namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>; // name to content

std::string contentOf(const fs::path& name)
{
    std::ifstream file(name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Result
{
    int status;
    std::string out;
    std::string err;
};

// Runs the tool inside a folder of its own that holds a cloud of a unit ball and some odd inputs.
class HostTool : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "zef-tool-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        base = pattern;
        folder = base / "work";
        fs::create_directories(folder / "folder.ply");
        writeBall("ball.xyz", 0.0, "nan nan nan\n1 inf 2\n");
        writeBall("far.xyz", 5000000.0, "");
        write("empty.xyz", "");
        write("two.xyz", "0 0 0\n1 1 1\n");
        write("row.xyz", "0 0 0\n1 1 1\n2 2 2\n3 3 3\n4 4 4\n");
        write("nan.xyz", "nan 0 0\n0 nan 0\n0 0 nan\n");
        write("cut.ply", "ply\nformat ascii 1.0\nelement vertex 9\n");
        const std::string plyPoints = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                                      "property float y\nproperty float z\n";
        write("points.ply", plyPoints + "end_header\n0 0 0\n1 0 0\n0 1 0\n");
        write("nan.ply", plyPoints + "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                                     "0 0 0\n1 0 nan\n0 1 0\n3 0 1 2\n");
        write("cloud.foo", "0 0 0\n");
        write("abc", "0 0 0\n");
        const std::uint64_t num = 3;
        write("cut.bin", std::string("\x1E\0\0\0", 4) + std::string(reinterpret_cast<const char*>(&num), 8) +
                             std::string(30, '\0'));
        write("old.ply", "precious");
        writeBox("box.stl", 1.0);
        writeBox("line.stl", 0.0);
    }
    void TearDown() override { fs::remove_all(base); }

    void write(const std::string& name, const std::string& content) const
    {
        std::ofstream(folder / name) << content;
    }

    // A spiral of 3000 points about a centre on the x axis.
    void writeBall(const std::string& name, double centre, const std::string& rest) const
    {
        std::ofstream file(folder / name);
        file.precision(17);
        for (int i = 0; i < 3000; ++i)
        {
            const double z = 1.0 - (2 * i + 1) / 3000.0;
            const double r = std::sqrt(1.0 - z * z);
            file << centre + r * std::cos(2.4 * i) << " " << r * std::sin(2.4 * i) << " " << z << "\n";
        }
        file << rest;
    }

    // Twelve triangles around a box 2 long whose other edges measure 2 * half.
    void writeBox(const std::string& name, double half) const
    {
        static const int CORNERS[] = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                      2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};
        std::ofstream file(folder / name);
        file << "solid box\n";
        for (std::size_t i = 0; i < std::size(CORNERS); ++i)
        {
            const int c = CORNERS[i];
            file << (i % 3 == 0 ? "facet normal 0 0 0\nouter loop\n" : "");
            file << "vertex " << (c & 1 ? 1 : -1) << " " << (c & 2 ? half : -half) << " "
                 << (c & 4 ? half : -half) << "\n";
            file << (i % 3 == 2 ? "endloop\nendfacet\n" : "");
        }
        file << "endsolid box\n";
    }

    // prefix: shell commands to run first, in the same shell.
    Result run(const std::string& arguments, const std::string& prefix = "") const
    {
        const std::string out = (base / "out.txt").string();
        const std::string err = (base / "err.txt").string();
        const std::string command = "cd '" + folder.string() + "' && { " + prefix + "'" ZEF_TOOL "' " +
                                    arguments + "; } >'" + out + "' 2>'" + err + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(out), contentOf(err)};
    }

    Files files() const
    {
        Files result;
        for (const auto& entry : fs::directory_iterator(folder))
            result[entry.path().filename().string()] = entry.is_regular_file() ? contentOf(entry.path()) : "";
        return result;
    }

    fs::path base;
    fs::path folder;
};

struct FailureCase
{
    const char *name, *arguments;
    int status;
    const char* words; // the reason holds them
    const char* prefix = "";
};

const FailureCase FAILURES[] = {
    {"nothing given", "", 2, "IN"},
    {"unknown option", "ball.xyz new.ply --nonsense", 2, "nonsense"},
    {"zero spacing", "ball.xyz new.ply -a 0", 2, "above 0"},
    {"both spacings", "ball.xyz new.ply -a 1 -f 1", 2, "excludes"},
    {"target is the input", "old.ply old.ply", 2, "replace"},
    {"sampling to a mesh file", "box.stl new.stl -m -a 1 --cloud", 2, ".xyz"},
    {"step without a mesh", "ball.xyz --png-cloud a.png --laplace 1", 2, "--laplace"},
    {"check without a mesh", "ball.xyz --png-cloud a.png --check", 2, "--check"},
    {"cells without a size", "box.stl old.ply -m --plain", 2, "-a"},
    {"samples without a spacing", "box.stl new.xyz -m --cloud", 2, "-a"},
    {"limit without a number", "ball.xyz new.ply --limit-memory much", 2, "500M"},
    {"limit of a remesh", "box.stl new.ply -m --limit-memory 1G", 2, "--plain"},
    {"check of points", "box.stl new.xyz -m -a 1 --cloud --check", 2, "--check"},
    {"reduction to nothing", "ball.xyz new.ply --reduce 0c", 2, "LEN"},
    {"reduction that folds over", "ball.xyz new.ply --reduce 2c,181", 2, "LEN"},
    {"input of unknown type", "cloud.foo new.ply", 1, "extension"},
    {"broken input", "cut.ply new.ply", 1, "cut.ply"},
    {"short name, read", "abc old.ply", 1, "extension"},
    {"short name, written", "ball.xyz abcd", 2, "extension"},
    {"cut binary input", "cut.bin old.ply", 1, "counts 3 points and holds only 1"},
    {"empty input", "empty.xyz old.ply", 1, "no points"},
    {"no finite point", "nan.xyz old.ply", 1, "no points"},
    {"too few points", "two.xyz old.ply", 1, "only 2"},
    {"all on one line", "row.xyz old.ply", 1, "no surface"},
    {"spacing far too small", "ball.xyz old.ply -a 1e-9", 1, "too small"},
    {"points for triangles", "points.ply old.ply -m -a 1", 1, "leave out -m"},
    {"no finite triangle", "nan.ply old.ply -m -a 1", 1, "no triangles"},
    {"triangles without area", "line.stl old.ply -m -a 0.1", 1, "no surface"},
    {"too many cells along triangles", "box.stl old.ply -m -a 1e-9", 1, "extent"},
    {"target folder missing", "ball.xyz none/new.ply", 1, "none"},
    {"target is a folder", "ball.xyz folder.ply", 1, "regular file"},
    {"target is a device", "ball.xyz full.ply", 1, "regular file", "ln -sf /dev/full full.ply; "},
    {"no room for the mesh", "ball.xyz old.ply", 1, "disk full", "ulimit -f 1; "},
    {"no room for the picture", "ball.xyz --png-cloud a.png", 1, "cannot write", "ulimit -f 2; "},
    {"figures cannot be printed", "ball.xyz old.ply --json >/dev/full", 1, "standard output"},
};

TEST_F(HostTool, aFailureTellsWhyAndLeavesAllFilesAlone)
{
    for (const FailureCase& c : FAILURES)
    {
        SCOPED_TRACE(c.name);
        const Files before = files();
        const Result result = run(c.arguments, c.prefix);
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(c.words), std::string::npos) << result.err;
        fs::remove(folder / "full.ply");
        EXPECT_EQ(files(), before);
    }
}

// The texts that follow a key in a line of JSON, in their order.
std::vector<std::string> valuesOf(const std::string& line, const std::string& key)
{
    EXPECT_TRUE(line.starts_with('{') && line.find('\n') == line.size() - 1 && line.ends_with("}\n")) << line;
    std::vector<std::string> values;
    const std::string start = '"' + key + "\": ";
    for (std::size_t i = line.find(start); i != std::string::npos; i = line.find(start, i + 1))
    {
        const std::size_t begin = i + start.size();
        const bool bText = line[begin] == '"';
        const std::size_t from = bText ? begin + 1 : begin;
        values.push_back(line.substr(from, line.find_first_of(bText ? "\"" : ",}", from) - from));
    }
    return values;
}

double numberOf(const std::string& line, const std::string& key)
{
    const std::vector<std::string> values = valuesOf(line, key);
    EXPECT_EQ(values.size(), 1u) << key;
    return values.size() == 1 ? std::stod(values[0]) : NAN;
}

// One closed piece with the Euler number of a ball.
void expectBall(const std::string& line)
{
    EXPECT_EQ(numberOf(line, "borderEdges"), 0);
    EXPECT_EQ(numberOf(line, "nonManifoldEdges"), 0);
    EXPECT_EQ(numberOf(line, "components"), 1);
    EXPECT_EQ(numberOf(line, "vertices") - numberOf(line, "triangles") / 2, 2);
}

TEST_F(HostTool, figuresOfABallAreThoseOfTheWrittenMesh)
{
    const Result result = run("ball.xyz old.ply --json --threads 2");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(numberOf(result.out, "points"), 3000); // the two that are not finite do not count
    expectBall(result.out);
    const std::string ply = contentOf(folder / "old.ply");
    EXPECT_NE(ply.find("element vertex " + valuesOf(result.out, "vertices")[0] + "\n"), std::string::npos);
}

TEST_F(HostTool, theChoiceIsTheMeshOfItsFactorAndIsTold)
{
    const Result chosen = run("ball.xyz old.ply --auto --json");
    ASSERT_EQ(chosen.status, 0) << chosen.err;
    EXPECT_NE(chosen.out.find("\"reason\""), std::string::npos) << chosen.out;
    const std::string factor = valuesOf(chosen.out, "factor")[0]; // the trials tell theirs after it
    ASSERT_EQ(run("ball.xyz given.ply -f " + factor).status, 0);
    EXPECT_EQ(contentOf(folder / "old.ply"), contentOf(folder / "given.ply")) << chosen.out;
    EXPECT_EQ(run("ball.xyz old.ply --auto -f 1.3").status, 2);
    EXPECT_NE(run("ball.xyz old.ply --auto").out.find("chosen: factor " + factor), std::string::npos);
}

TEST_F(HostTool, meltedBoxIsClosedAndItsSamplesLieOnIt)
{
    for (const char* pWay : {" -a 0.1 --plain", " -a 0.1", "", " -f 0.5"})
    {
        SCOPED_TRACE(pWay);
        const Result result = run(std::string("box.stl old.ply -m --feature-angle 30 --json") + pWay);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(numberOf(result.out, "inputTriangles"), 12);
        expectBall(result.out);
    }

    const Result sampled = run("box.stl new.xyz -m -a 0.1 --cloud --json");
    ASSERT_EQ(sampled.status, 0) << sampled.err;
    std::ifstream file(folder / "new.xyz");
    double num = 0;
    for (double x, y, z; file >> x >> y >> z; ++num)
        EXPECT_NEAR(std::max({std::fabs(x), std::fabs(y), std::fabs(z)}), 1.0, 1e-9) << num;
    EXPECT_EQ(numberOf(sampled.out, "points"), num);
    EXPECT_NEAR(num, 24.0 / (0.1 * 0.1), 500.0); // about one for each cell on the area of the box
}

TEST_F(HostTool, stepsRunInTheOrderOfTheCommandLine)
{
    const struct
    {
        const char* arguments;
        std::vector<std::string> steps;
    } cases[] = {
        {"--flips --reduce 3c --laplace 2", {"flips", "reduce 3c,25", "laplace 2"}},
        {"--reduce 1.5c --flips --reduce 3c,30 --flips --anneal",
         {"reduce 1.5c,25", "flips", "reduce 3c,30", "flips", "anneal"}},
    };
    std::set<std::string> meshes;
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.arguments);
        const Result result = run(std::string("ball.xyz new.ply --json ") + c.arguments);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(valuesOf(result.out, "step"), c.steps);
        // The mesh first, then one for each step.
        const std::vector<std::string> triangles = valuesOf(result.out, "triangles");
        ASSERT_EQ(triangles.size(), c.steps.size() + 1) << result.out;
        EXPECT_EQ(triangles.front(), triangles.back());
        double last = 1e9;
        for (std::size_t i = 0; i < c.steps.size(); ++i)
        {
            const double now = std::stod(triangles[i + 1]);
            const bool bSecondReduction = i > 0 && c.steps[i].starts_with("reduce");
            EXPECT_LE(now, bSecondReduction ? 0.8 * last : last); // no step adds triangles
            last = now;
        }
        meshes.insert(contentOf(folder / "new.ply"));
    }
    EXPECT_EQ(meshes.size(), std::size(cases));
}

TEST_F(HostTool, quietMeansQuietAndFilesAppearWhole)
{
    const std::size_t numFiles = files().size();
    const Result result = run("ball.xyz new.stl -q -s -f 1.5 --png mesh.png --png-cloud cloud.png --wire");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
    Files after = files();
    for (const char* pName : {"mesh.png", "cloud.png"})
    {
        EXPECT_EQ(after[pName].substr(0, 8), "\x89PNG\r\n\x1a\n") << pName;
        EXPECT_GT(after[pName].size(), 20000u) << pName; // an empty background packs far smaller
    }
    EXPECT_EQ(after["new.stl"].substr(0, 5), "solid");
    EXPECT_NE(after["new.stl"].find("endsolid"), std::string::npos);
    EXPECT_EQ(after.size(), numFiles + 3);
}

// A spacing far below that of the points tears the surface to shreds; smoothing for long brings all into order.
TEST_F(HostTool, theCheckDecidesTheStatus)
{
    const Result good = run("ball.xyz good.ply --laplace 300 --check");
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_NE(good.out.find("check: sound, closed, Euler number 2"), std::string::npos) << good.out;
    const Result bad = run("ball.xyz bad.ply -a 0.03 --plain --check");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.out.find("check: not sound"), std::string::npos) << bad.out;
    EXPECT_NE(bad.out.find("    triangle "), std::string::npos);
    const Result json = run("ball.xyz json.ply -a 0.03 --plain --check --json");
    EXPECT_EQ(json.status, 1);
    EXPECT_NE(json.out.find("\"check\": {\"sound\": 0, "), std::string::npos) << json.out;
    EXPECT_EQ(contentOf(folder / "bad.ply"), contentOf(folder / "json.ply"));
    EXPECT_EQ(run("ball.xyz plain.ply -a 0.03").status, 0);
}

// The passes lead from the first triangles to those of the file, in both forms.
TEST_F(HostTool, theReportTellsOfEachCall)
{
    const Result text = run("ball.xyz old.ply --report --flips");
    EXPECT_EQ(text.status, 0) << text.err;
    for (const char* pWords :
         {"reconstruct_auto: ", "finishSurface: ", "edgeFlips: ", " used", "stage cells: "})
        EXPECT_NE(text.out.find(pWords), std::string::npos) << pWords << "\n" << text.out;
    const Result json = run("ball.xyz new.ply --report --json --plain");
    const std::vector<std::string> vTriangles = valuesOf(json.out, "triangles");
    ASSERT_EQ(vTriangles.size(), 2u) << json.out; // of the mesh and of the call
    EXPECT_EQ(vTriangles[0], vTriangles[1]);
    EXPECT_EQ(numberOf(json.out, "usedPoints"), 3000);
    EXPECT_EQ(run("ball.xyz old.ply --json").out.find("\"calls\""), std::string::npos);
}

// A dry run writes nothing; what it tells is where the limit refuses, and the spacing it names is one that works.
TEST_F(HostTool, memoryIsForecastAndLimited)
{
    const Result dry = run("ball.xyz --dry-run --json");
    ASSERT_EQ(dry.status, 0) << dry.err;
    const double bytes = numberOf(dry.out, "forecastBytes");
    EXPECT_EQ(run("ball.xyz new.ply --limit-memory " + std::to_string(bytes + 1.0)).status, 0);
    const Result refused = run("ball.xyz old.ply --limit-memory " + std::to_string(bytes - 1e6));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find(" would fit, a factor of "), std::string::npos) << refused.err;
    EXPECT_EQ(contentOf(folder / "old.ply"), "precious");
}

TEST_F(HostTool, farCoordinatesKeepTheirDigits)
{
    EXPECT_EQ(run("far.xyz far.ply").err, "");
    EXPECT_NE(contentOf(folder / "far.ply").find("property double x"), std::string::npos);
    EXPECT_EQ(run("ball.xyz near.ply").err, "");
    EXPECT_NE(contentOf(folder / "near.ply").find("property float x"), std::string::npos);
    // What is written as double is read as double: the mesh as a soup is still there.
    const Result again = run("far.ply again.ply -m -a 1 --cloud");
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.err.find(".xyz"), std::string::npos);
}

TEST(MeshStatistics, edgesAndPieces)
{
    const struct
    {
        const char* name;
        std::size_t numVertices;
        std::vector<int> vCorners;
        std::size_t numBorderEdges, numNonManifoldEdges, numComponents;
    } cases[] = {
        {"no triangle", 3, {}, 0, 0, 0},
        {"tetrahedron", 4, {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3}, 0, 0, 1},
        {"two triangles, wound against each other", 4, {0, 1, 2, 0, 1, 3}, 4, 0, 1},
        {"three on one edge", 5, {0, 1, 2, 1, 0, 3, 0, 1, 4}, 6, 1, 1},
        {"touching in a vertex", 5, {0, 1, 2, 2, 3, 4}, 6, 0, 1},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        const TARN_TOOL::MeshStatistics statistics(c.numVertices, c.vCorners);
        EXPECT_EQ(statistics.numTriangles, c.vCorners.size() / 3);
        EXPECT_EQ(statistics.numBorderEdges, c.numBorderEdges);
        EXPECT_EQ(statistics.numNonManifoldEdges, c.numNonManifoldEdges);
        EXPECT_EQ(statistics.numComponents, c.numComponents);
    }
}
} // namespace
