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
        write("cloud.foo", "no numbers\n");
        write("abc", "no numbers\n");
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
    {"hull from cells", "box.stl new.ply -m -a 1 --plain --outer", 2, "--plain"},
    {"hull of points", "ball.xyz new.ply --outer", 2, "--fmelt"},
    {"bridges without a hull", "box.stl new.ply -m --bridge 2", 2, "--outer"},
    {"too wide a bridge", "box.stl new.ply -m --outer --bridge 101", 2, "--bridge"},
    {"limit without a number", "ball.xyz new.ply --limit-memory much", 2, "500M"},
    {"limit of a remesh", "box.stl new.ply -m --limit-memory 1G", 2, "--plain"},
    {"check of points", "box.stl new.xyz -m -a 1 --cloud --check", 2, "--check"},
    {"reduction to nothing", "ball.xyz new.ply --reduce 0c", 2, "LEN"},
    {"reduction that folds over", "ball.xyz new.ply --reduce 2c,181", 2, "LEN"},
    {"input of unknown type", "cloud.foo new.ply", 1, "neither its first bytes nor its name"},
    {"mistyped option", "ball.xyz new.ply --smoth", 2, "Did you mean --smooth?"},
    {"no such color", "ball.xyz new.ply --color blue", 2, "blue"},
    {"standard output of no format", "ball.xyz -", 2, "--format"},
    {"columns of no meaning", "ball.xyz new.ply --columns x,y,w", 1, "columns"},
    {"no class", "ball.xyz new.ply --classes 2,ground", 2, "--classes"},
    {"triangles with a spacing", "box.stl new.ply -a 0.1", 2, "-m"},
    {"mesh of points", "ball.xyz new.ply --mesh", 1, "ball.xyz"},
    {"conversion of points to triangles", "ball.xyz new.stl --convert", 1, "leave out --convert"},
    {"conversion with a step", "box.stl new.ply --convert --flips", 2, "--mesh"},
    {"text that is compressed", "ball.xyz new.pcd --convert --ascii --compress", 2, "excludes"},
    {"batch of a format for nothing", "ball.xyz --batch new --format las", 2, "--format"},
    {"batch with pictures", "ball.xyz --batch new --png a.png", 2, "--png"},
    {"batch of one name", "ball.xyz ./ball.xyz --batch new", 1, "two inputs"},
    {"batch of a stream", "- --batch new", 2, "no name"},
    {"turntable of nothing", "ball.xyz new.ply --turntable 8", 2, "--png"},
    {"turntable of one", "ball.xyz new.ply --png a.png --turntable 1", 2, "--turntable"},
    {"turntable without a number", "ball.xyz new.ply --png a.png --turntable all", 2, "--turntable"},
    {"picture of no height", "ball.xyz new.ply --png a.png --size 800", 2, "--size"},
    {"picture too large", "ball.xyz new.ply --png a.png --size 800,8001", 2, "8000"},
    {"page of another kind", "ball.xyz new.ply --html page.png", 2, ".html"},
    {"page of points", "ball.xyz --png-cloud a.png --html page.html", 2, "needs OUT"},
    {"colors of nothing", "ball.xyz new.ply --paint curvature", 2, "--html"},
    {"colors of no kind", "ball.xyz new.ply --png a.png --paint blue", 2, "blue"},
    {"marks of nothing", "ball.xyz new.ply --marks", 2, "--png"},
    {"scale bar of nothing", "ball.xyz new.ply --html page.html --scale-bar", 2, "--png"},
    {"distance without a cloud", "box.stl new.ply --png a.png --paint distance", 2, "--compare"},
    {"distance of a finished mesh", "box.stl --mesh --png a.png --paint distance", 2, "--compare"},
    {"comparison in other colors", "box.stl box.stl --compare --png a.png --paint pieces", 2, "--paint"},
    {"page in a missing folder", "ball.xyz old.ply --html none/page.html", 1, "none"},
    {"comparison of one", "box.stl --compare", 2, "A and B"},
    {"comparison of points", "box.stl ball.xyz --compare", 1, "ball.xyz"},
    {"comparison and a step", "box.stl box.stl --compare --flips", 2, "--mesh"},
    {"holes of no kind", "box.stl new.ply --fill some", 2, "all-but-rim"},
    {"hole that is not there", "box.stl new.ply --fill 3", 1, "no border 3 of 0"},
    {"broken input", "cut.ply new.ply", 1, "cut.ply"},
    {"short name, read", "abc old.ply", 1, "neither its first bytes nor its name"},
    {"short name, written", "ball.xyz abcd", 2, "extension"},
    {"cut binary input", "cut.bin old.ply", 1, "counts 3 points and holds 1"},
    {"empty input", "empty.xyz old.ply", 1, "empty"},
    {"no finite point", "nan.xyz old.ply", 1, "three finite numbers"},
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
    for (const char* pWay :
         {" -a 0.1 --plain", " -a 0.1", "", " -f 0.5", " --outer", " -a 0.1 --outer --bridge 2"})
    {
        SCOPED_TRACE(pWay);
        const Result result = run(std::string("box.stl old.ply -m --feature-angle 30 --json") + pWay);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(numberOf(result.out, "inputTriangles"), 12);
        expectBall(result.out);
    }

    // Found: the gap between the flat faces and the edges of the box.
    const Result found = run("box.stl old.ply -m --json");
    EXPECT_GT(numberOf(found.out, "featureAngle"), 0.0);
    EXPECT_LT(numberOf(found.out, "featureAngle"), 90.0);
    EXPECT_GT(numberOf(found.out, "spacing"), 0.0);

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
    EXPECT_EQ(bad.status, 3);
    EXPECT_NE(bad.out.find("check: not sound"), std::string::npos) << bad.out;
    EXPECT_NE(bad.out.find("    triangle "), std::string::npos);
    const Result json = run("ball.xyz json.ply -a 0.03 --plain --check --json");
    EXPECT_EQ(json.status, 3);
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
    EXPECT_EQ(run("ball.xyz near.ply").status, 0);
    EXPECT_NE(contentOf(folder / "near.ply").find("property float x"), std::string::npos);
    // What is written as double is read as double: the mesh as a soup is still there, and so are its samples.
    const Result again = run("far.ply again.ply -m -a 1 --cloud");
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(contentOf(folder / "again.ply").find("property double x"), std::string::npos);
    EXPECT_NE(run("far.ply far.stl --convert --binary").err.find("steps of 0.5"), std::string::npos);
}

// Coordinates that are exact at both places make the same mesh, moved.
TEST_F(HostTool, aCommonOffsetIsTakenOffAndPutBack)
{
    const auto rounded = [](double x) { return std::round(x * 1048576.0) / 1048576.0; };
    constexpr double OFFSET = 67108864.0;
    std::ofstream nearFile(folder / "near.xyz");
    std::ofstream farFile(folder / "moved.xyz");
    nearFile.precision(17);
    farFile.precision(17);
    for (int i = 0; i < 2000; ++i)
    {
        const double z = 1.0 - (2 * i + 1) / 2000.0;
        const double r = std::sqrt(1.0 - z * z);
        const double x = rounded(r * std::cos(2.4 * i));
        const double y = rounded(r * std::sin(2.4 * i));
        nearFile << x << " " << y << " " << rounded(z) << "\n";
        farFile << OFFSET + x << " " << y - OFFSET << " " << rounded(z) << "\n";
    }
    nearFile.close();
    farFile.close();
    ASSERT_EQ(run("near.xyz near.obj && '" ZEF_TOOL "' moved.xyz moved.obj").status, 0);
    std::ifstream nearMesh(folder / "near.obj");
    std::ifstream farMesh(folder / "moved.obj");
    std::string nearLine;
    std::string farLine;
    std::size_t numVertices = 0;
    while (std::getline(nearMesh, nearLine) && std::getline(farMesh, farLine))
    {
        if (!nearLine.starts_with("v "))
        {
            EXPECT_EQ(nearLine, farLine);
            continue;
        }
        double a[3];
        double b[3];
        ASSERT_EQ(std::sscanf(nearLine.c_str(), "v %lf %lf %lf", &a[0], &a[1], &a[2]), 3);
        ASSERT_EQ(std::sscanf(farLine.c_str(), "v %lf %lf %lf", &b[0], &b[1], &b[2]), 3);
        EXPECT_EQ(b[0], a[0] + OFFSET);
        EXPECT_EQ(b[1], a[1] - OFFSET);
        EXPECT_EQ(b[2], a[2]);
        ++numVertices;
    }
    EXPECT_GT(numVertices, 500u);
    EXPECT_FALSE(std::getline(farMesh, farLine));
}

// Whatever the format of the points, the mesh is the same.
TEST_F(HostTool, pointsOfEveryFormatMakeTheSameMesh)
{
    ASSERT_EQ(run("ball.xyz expected.ply -q").status, 0);
    const std::string expected = contentOf(folder / "expected.ply");
    for (const char* pExtension : {"ply", "pcd", "txt", "asc", "csv", "pts", "ptx", "obj", "off", "bin"})
    {
        SCOPED_TRACE(pExtension);
        const std::string name = std::string("points.") + pExtension;
        const Result converted = run("ball.xyz " + name + " --convert");
        ASSERT_EQ(converted.status, 0) << converted.err;
        EXPECT_EQ(converted.out, "ball.xyz: 3000 points\n" + name + ": written\n");
        const Result made = run(name + " made.ply -q");
        ASSERT_EQ(made.status, 0) << made.err;
        EXPECT_EQ(contentOf(folder / "made.ply"), expected);
    }
    // What a file holds counts, not its name, and the columns may be named.
    fs::rename(folder / "points.pcd", folder / "points.xyz");
    const Result misnamed = run("points.xyz made.ply");
    EXPECT_EQ(misnamed.status, 0);
    EXPECT_NE(misnamed.err.find("in spite of its name"), std::string::npos) << misnamed.err;
    EXPECT_EQ(contentOf(folder / "made.ply"), expected);
    write("swapped.txt", "1 2 3 4\n5 6 7 8\n");
    ASSERT_EQ(run("swapped.txt swapped.xyz --convert --columns z,-,x,y").status, 0);
    EXPECT_EQ(contentOf(folder / "swapped.xyz"), "3 4 1\n7 8 5\n");
}

TEST_F(HostTool, meshesOfEveryFormatAreSoundAndAlike)
{
    ASSERT_EQ(run("ball.xyz ball.ply -q").status, 0);
    expectBall(run("ball.ply --mesh --holes --json").out);
    const std::string expected = run("ball.ply --mesh --check --json").out;
    for (const char* pTarget :
         {"m.ply", "m.ply --ascii", "m.stl", "m.stl --binary", "m.obj", "m.off", "m.glb"})
    {
        SCOPED_TRACE(pTarget);
        ASSERT_EQ(run(std::string("ball.ply ") + pTarget + " --mesh -q").status, 0);
        const std::string name = std::string(pTarget).substr(0, 5);
        const Result found = run(name + " --mesh --check --json");
        EXPECT_EQ(found.status, 0) << found.err;
        for (const char* pKey : {"vertices", "triangles", "sound"})
            EXPECT_EQ(valuesOf(found.out, pKey), valuesOf(expected, pKey)) << pKey;
    }
}

// A box without its last two sides has a hole of four edges, or a rim, as much as is missing.
TEST_F(HostTool, holesAreListedAndFilled)
{
    const std::string box = contentOf(folder / "box.stl");
    std::size_t cut = box.size();
    for (int i = 0; i < 2; ++i)
        cut = box.rfind("facet", box.rfind("endfacet", cut - 1) - 1);
    write("open.stl", box.substr(0, cut) + "endsolid box\n");
    const Result listed = run("open.stl --holes --check");
    EXPECT_EQ(listed.status, 0) << listed.err;
    EXPECT_NE(listed.out.find("1: hole of 4 vertices, length 8"), std::string::npos) << listed.out;
    for (const char* pWhich : {"1", "8.5", "5c", "all-but-rim", "all"})
    {
        SCOPED_TRACE(pWhich);
        const Result filled = run(std::string("open.stl closed.obj --json --fill ") + pWhich);
        ASSERT_EQ(filled.status, 0) << filled.err;
        EXPECT_EQ(valuesOf(filled.out, "remark"), std::vector<std::string>{"1 of 1 holes filled"});
        expectBall(run("closed.obj --holes --json").out);
    }
    const Result tooLong = run("open.stl left.obj --json --fill 7.5");
    EXPECT_EQ(numberOf(tooLong.out, "borderEdges"), 4) << tooLong.out;
}

TEST_F(HostTool, surfacesAreCompared)
{
    writeBox("thick.stl", 1.5); // 2 long as the other one, and 3 instead of 2 in the other two directions
    const Result found = run("box.stl thick.stl --compare --json --png compared.png");
    ASSERT_EQ(found.status, 0) << found.err;
    const std::vector<std::string> largest = valuesOf(found.out, "largest");
    ASSERT_EQ(largest.size(), 2u) << found.out;
    // The edges of the inner box lie inside the outer one, half a unit from its sides; those of the outer one are
    // half a unit off twice.
    EXPECT_NEAR(std::stod(largest[0]), 0.5, 1e-12);
    EXPECT_NEAR(std::stod(largest[1]), std::sqrt(0.5), 1e-12);
    EXPECT_GT(contentOf(folder / "compared.png").size(), 20000u);
    for (const std::string& value : valuesOf(run("box.stl box.stl --compare --json").out, "largest"))
        EXPECT_NEAR(std::stod(value), 0.0, 1e-15);
}

TEST_F(HostTool, allPicturesAppearAtOnce)
{
    const Files before = files();
    const Result made =
        run("ball.xyz new.ply --json --png a.b.png --turntable 3 --html page.html --paint distance "
            "--marks --scale-bar --png-cloud cloud.png");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(valuesOf(made.out, "of"), std::vector<std::string>{"distance"});
    // No vertex of a ball of 3000 points is farther from the next one than the points lie apart.
    EXPECT_GT(numberOf(made.out, "red"), 0.0);
    EXPECT_LT(numberOf(made.out, "red"), numberOf(made.out, "spacing"));
    EXPECT_EQ(numberOf(made.out, "scaleBar"), 0.5);
    const Files after = files();
    std::set<std::string> pictures;
    for (const auto& [name, content] : after)
        if (!before.contains(name))
            pictures.insert(content);
    EXPECT_EQ(after.size(), before.size() + 6);
    EXPECT_EQ(pictures.size(), 6u); // all different
    for (const char* pName : {"a.b_000.png", "a.b_001.png", "a.b_002.png", "cloud.png", "page.html"})
        EXPECT_GT(after.at(pName).size(), 10000u) << pName;
}

TEST_F(HostTool, standardStreamsCarryFiles)
{
    ASSERT_EQ(run("ball.xyz expected.ply -q").status, 0);
    const Result piped = run("- - --format ply", "cat ball.xyz | ");
    EXPECT_EQ(piped.status, 0) << piped.err;
    EXPECT_EQ(piped.out, contentOf(folder / "expected.ply"));
    EXPECT_NE(piped.err.find("standard input: 3000 points"), std::string::npos) << piped.err;
    EXPECT_EQ(run("- --mesh --check", "cat expected.ply | ").status, 0);
    EXPECT_EQ(run("ball.xyz - --format ply -q >/dev/full").status, 1);
}

// Each option that the help shows stands in each document, and shells can read theirs.
TEST_F(HostTool, documentsNameTheOptionsOfTheHelp)
{
    const std::string help = run("--help").out;
    for (const char* pKind : {"man", "bash", "zsh", "fish"})
    {
        SCOPED_TRACE(pKind);
        const Result made = run(std::string("--generate ") + pKind);
        ASSERT_EQ(made.status, 0) << made.err;
        std::istringstream lines(help);
        std::size_t numOptions = 0;
        for (std::string line; std::getline(lines, line);)
        {
            const std::size_t dashes = line.find("--");
            if (!line.starts_with("  -") || dashes > 5)
                continue;
            std::string name = line.substr(dashes, line.find_first_of(" ,", dashes) - dashes);
            if (std::string(pKind) == "fish")
                name.replace(0, 2, "-l ");
            if (std::string(pKind) == "man")
                for (std::size_t i = name.find('-'); i != std::string::npos; i = name.find('-', i + 2))
                    name.insert(i, "\\");
            EXPECT_NE(made.out.find(name), std::string::npos) << name;
            ++numOptions;
        }
        EXPECT_GT(numOptions, 30u) << help;
    }
    EXPECT_EQ(run("--generate bash >c.bash && bash -n c.bash").status, 0);
}

TEST_F(HostTool, aBatchGoesOnAfterAFailure)
{
    const Result result = run("ball.xyz two.xyz far.xyz --batch results/new --format obj");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("two.xyz failed: "), std::string::npos) << result.err;
    EXPECT_NE(result.out.find("batch: 2 of 3 inputs done"), std::string::npos) << result.out;
    ASSERT_EQ(run("ball.xyz ball.obj -q && '" ZEF_TOOL "' far.xyz far.obj -q").status, 0);
    EXPECT_EQ(contentOf(folder / "results/new/ball.obj"), contentOf(folder / "ball.obj"));
    EXPECT_EQ(contentOf(folder / "results/new/far.obj"), contentOf(folder / "far.obj"));
    EXPECT_FALSE(fs::exists(folder / "results/new/two.obj"));
    const Result json = run("two.xyz ball.xyz --batch results --json -q");
    EXPECT_EQ(json.status, 1);
    EXPECT_NE(json.out.find("\"input\": \"two.xyz\", \"error\": \""), std::string::npos) << json.out;
    EXPECT_NE(json.out.find("\"task\": \"batch\", \"inputs\": 2, \"failed\": 1"), std::string::npos);
    EXPECT_EQ(run("ball.xyz --batch .").status, 0);
}

TEST_F(HostTool, anInterruptedRunLeavesNoFile)
{
    const Files before = files();
    const Result result = run("artificial123.xyz old.ply --anneal --anneal --anneal --anneal --anneal",
                              "timeout --foreground --preserve-status -s INT 0.6 ");
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("interrupted"), std::string::npos) << result.err;
    EXPECT_EQ(files(), before);
}

TEST_F(HostTool, severalInputsAreOneCloud)
{
    const std::string ball = contentOf(folder / "ball.xyz");
    const std::size_t middle = ball.find('\n', ball.size() / 2) + 1;
    write("half1.xyz", ball.substr(0, middle));
    write("half2.txt", ball.substr(middle));
    ASSERT_EQ(run("ball.xyz whole.ply -q && '" ZEF_TOOL "' half1.xyz half2.txt halves.ply -q").status, 0);
    EXPECT_EQ(contentOf(folder / "whole.ply"), contentOf(folder / "halves.ply"));
    EXPECT_EQ(run("half1.xyz half2.txt --spacing").out, run("ball.xyz --spacing").out);
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
