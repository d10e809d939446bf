#include "functions.h"

#include "output/elementFiles.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <new>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <sys/stat.h>

using namespace TESK_KIVO2D;

namespace {

std::string makeFile(const std::string& content, const std::string& path = pathOf("input")) {
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

template<class Value>
std::string bytesOf(Value value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string binary(std::int32_t type, std::uint64_t num, std::initializer_list<double> values) {
    std::string bytes = bytesOf(type) + bytesOf(num);
    for (const double value : values)
        bytes += bytesOf(value);
    return bytes;
}

// What a reader appends to the one element that its vector holds already, and what it says.
template<class Element>
struct Read {
    bool bOk;
    std::vector<Element> vElements;
    std::string messages;
};

template<class Element>
Read<Element> readInto(bool (*reader)(const char*, std::vector<Element>&), const std::string& path,
                       const Element& first) {
    CapturedMessages messages;
    std::vector<Element> vElements{first};
    const bool bOk = reader(path.c_str(), vElements);
    EXPECT_FALSE(vElements.empty());
    EXPECT_EQ(first, vElements.front());
    vElements.erase(vElements.begin());
    return {bOk, vElements, messages.output()};
}

Read<Point2> readPoints(const std::string& path) { return readInto(&readPointsBIN, path, Point2(7, 8)); }
Read<Point2> readText(const std::string& path) { return readInto(&readXY, path, Point2(7, 8)); }
Read<Segment2> readSegments(const std::string& path) {
    return readInto(&readSegmentsBIN, path, Segment2({1, 2}, {3, 5}));
}

template<class Element>
void expectRefused(const Read<Element>& read, const std::string& path, const std::string& text) {
    EXPECT_FALSE(read.bOk);
    EXPECT_TRUE(read.vElements.empty());
    EXPECT_EQ(path + text + "\n", read.messages);
}

std::vector<Point2> nastyPoints(std::size_t num) {
    std::mt19937_64 rng(7);
    std::vector<Point2> vPoints = doubles::anyPoints(rng, num);
    vPoints.emplace_back(-0.0, std::numeric_limits<double>::denorm_min());
    vPoints.emplace_back(std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest());
    return vPoints;
}

void expectSameBits(const std::vector<Point2>& vExpected, const std::vector<Point2>& vPoints) {
    ASSERT_EQ(vExpected.size(), vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        EXPECT_EQ(bytesOf(vExpected[i].x()) + bytesOf(vExpected[i].y()),
                  bytesOf(vPoints[i].x()) + bytesOf(vPoints[i].y()));
        EXPECT_EQ(-1, vPoints[i].getCustomIndex());
    }
}

// A decimal comma and a dot between thousands, everywhere, while the object lives.
class CommaLocale {
public:
    CommaLocale() : before(std::locale::global(std::locale(std::locale::classic(), new Comma))) {
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where the system has it
    }
    ~CommaLocale() {
        std::locale::global(before);
        std::setlocale(LC_NUMERIC, "C");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale before;
};

} // namespace

TEST(PointFiles, binaryLayoutIsTypeCountAndCoordinates) {
    const std::string path = pathOf("layout.bin");
    Point2 a(1, 2), b(3, 4);
    a.setCustomIndex(99);
    EXPECT_TRUE(writePointsBIN(path.c_str(), std::vector<Point2>{a, b}));
    EXPECT_EQ(binary(20, 2, {1, 2, 3, 4}), readFile(path));
    EXPECT_TRUE(writePointsBIN(path.c_str(), std::vector<Point2*>{&b, &a}));
    EXPECT_EQ(binary(20, 2, {3, 4, 1, 2}), readFile(path));
    EXPECT_EQ(-1, readPoints(path).vElements[1].getCustomIndex());
    EXPECT_TRUE(writeSegmentsBIN(path.c_str(), {Segment2(a, b), Segment2(b, a)}));
    EXPECT_EQ(binary(21, 2, {1, 2, 3, 4, 3, 4, 1, 2}), readFile(path));
    EXPECT_TRUE(writePointsBIN(path.c_str(), std::vector<Point2>()));
    EXPECT_EQ(12U, readFile(path).size());
    EXPECT_TRUE(readPoints(path).bOk);
    EXPECT_TRUE(readPoints(path).vElements.empty());
}

TEST(PointFiles, everyDoubleComesBackInBothFormats) {
    const std::vector<Point2> vPoints = nastyPoints(20000); // several blocks
    const std::string path = pathOf("round.trip");
    EXPECT_TRUE(writePointsBIN(path.c_str(), vPoints));
    expectSameBits(vPoints, readPoints(path).vElements);
    EXPECT_TRUE(writePointsASCII(path.c_str(), vPoints));
    const Read<Point2> read = readText(path);
    EXPECT_TRUE(read.bOk);
    expectSameBits(vPoints, read.vElements);
    EXPECT_EQ("", read.messages);
}

TEST(SegmentFiles, everySegmentComesBackWithItsDirection) {
    const std::vector<Point2> vPoints = nastyPoints(9999);
    std::vector<Segment2> vSegments;
    for (std::size_t i = 0; i + 1 < vPoints.size(); ++i)
        vSegments.emplace_back(vPoints[i], vPoints[i + 1]);
    const std::string path = pathOf("segments.bin");
    EXPECT_TRUE(writeSegmentsBIN(path.c_str(), vSegments));
    const Read<Segment2> read = readSegments(path);
    ASSERT_EQ(vSegments.size(), read.vElements.size());
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        EXPECT_EQ(vPoints[i], read.vElements[i].getSrc());
        EXPECT_EQ(vPoints[i + 1], read.vElements[i].getTrg());
        EXPECT_EQ(-1, read.vElements[i].getTrg().getCustomIndex());
    }
}

TEST(PointFiles, heightsAreDropped) {
    const Read<Point2> points = readPoints(makeFile(binary(30, 2, {1, 2, 99, 3, 4, 99})));
    EXPECT_TRUE(points.bOk);
    EXPECT_EQ((std::vector<Point2>{{1, 2}, {3, 4}}), points.vElements);
    const Read<Segment2> segments = readSegments(makeFile(binary(31, 1, {1, 2, 99, 3, 4, 99})));
    EXPECT_TRUE(segments.bOk);
    ASSERT_EQ(1U, segments.vElements.size());
    EXPECT_EQ(Point2(1, 2), segments.vElements[0].getSrc());
    EXPECT_EQ(Point2(3, 4), segments.vElements[0].getTrg());
}

TEST(PointFiles, foreignFilesAreRefusedByTheTextOfEachReader) {
    const std::string path = makeFile(binary(21, 1, {1, 2, 3, 4}));
    expectRefused(readPoints(path), path, " has wrong filetype 21, expected: 30 or 20");
    makeFile(binary(-5, 1, {1, 2, 3, 4}));
    expectRefused(readSegments(path), path, " has wrong file type: -5 instead of 31 or 21");
    makeFile("abc"); // too short for a type
    expectRefused(readPoints(path), path, " has wrong filetype 0, expected: 30 or 20");
    for (const std::string& unreadable : {pathOf("missing"), testing::TempDir(), std::string()}) {
        expectRefused(readPoints(unreadable), unreadable, " can't be read");
        expectRefused(readSegments(unreadable), unreadable, " can't be read");
        expectRefused(readText(unreadable), unreadable, " is unreadable");
    }
    CapturedMessages messages;
    std::vector<Point2> vPoints;
    EXPECT_FALSE(readPointsBIN(nullptr, vPoints));
    EXPECT_FALSE(readXY(nullptr, vPoints));
    EXPECT_FALSE(writePointsBIN(nullptr, vPoints));
}

TEST(PointFiles, whatATruncatedFileLacksIsZero) {
    const std::string whole = binary(20, 3, {1, 2, 3, 4, 5, 6});
    const std::vector<Point2> vWhole{{1, 2}, {3, 4}, {5, 6}};
    for (std::size_t length = 4; length <= whole.size(); ++length) {
        const Read<Point2> read = readPoints(makeFile(whole.substr(0, length)));
        EXPECT_TRUE(read.bOk);
        EXPECT_EQ("", read.messages);
        ASSERT_EQ(length < 12 ? 0U : 3U, read.vElements.size()); // a count that is cut counts as none
        for (std::size_t i = 0; i < read.vElements.size(); ++i) {
            EXPECT_EQ(length >= 20 + 16 * i ? vWhole[i].x() : 0, read.vElements[i].x());
            EXPECT_EQ(length >= 28 + 16 * i ? vWhole[i].y() : 0, read.vElements[i].y());
        }
    }
}

TEST(PointFiles, headersThatClaimAMebibyteTooMuchAreRefused) {
    // 65536 points are 2^20 bytes: the file lacks exactly that much, which is still accepted.
    const Read<Point2> atLimit = readPoints(makeFile(binary(20, 65536 + 2, {1, 2, 3, 4})));
    EXPECT_TRUE(atLimit.bOk);
    ASSERT_EQ(65538U, atLimit.vElements.size());
    EXPECT_EQ(Point2(3, 4), atLimit.vElements[1]);
    EXPECT_EQ(Point2(0, 0), atLimit.vElements.back());
    const std::uint64_t aLies[] = {65539, std::uint64_t{1} << 31, std::uint64_t{1} << 60,
                                   (std::uint64_t{1} << 60) + 2, ~std::uint64_t{0}};
    for (const std::uint64_t lie : aLies) {
        const std::string path = makeFile(binary(20, lie, {1, 2, 3, 4}));
        expectRefused(readPoints(path), path, " claims more elements than it holds");
        makeFile(binary(31, lie, {1, 2, 3, 4, 5, 6}));
        expectRefused(readSegments(path), path, " claims more elements than it holds");
    }
}

TEST(PointFiles, memoryThatRunsOutIsNoException) {
    CapturedMessages messages;
    const std::string path = makeFile(binary(20, 1, {1, 2}));
    ElementConsumer consumer;
    consumer.reserve = [](std::size_t) { throw std::bad_alloc(); };
    EXPECT_FALSE(readBinaryElements(path.c_str(), {20, 30, 1, "", ""}, consumer));
    consumer.reserve = [](std::size_t) { throw std::length_error("vector"); };
    EXPECT_FALSE(readBinaryElements(path.c_str(), {20, 30, 1, "", ""}, consumer));
    const std::string line = path + " claims more elements than it holds\n";
    EXPECT_EQ(line + line, messages.output());
}

TEST(PointFiles, aPipeIsReadLikeAFile) {
    const std::string path = pathOf("pipe");
    const auto readThroughPipe = [&path](const std::string& content) {
        std::filesystem::remove(path);
        EXPECT_EQ(0, mkfifo(path.c_str(), 0600));
        std::thread writer([&] { makeFile(content, path); });
        const Read<Point2> read = readPoints(path);
        writer.join();
        return read;
    };
    std::string content = binary(20, 5000, {});
    for (int i = 0; i < 10000; ++i)
        content += bytesOf(static_cast<double>(i));
    const Read<Point2> read = readThroughPipe(content);
    EXPECT_TRUE(read.bOk);
    ASSERT_EQ(5000U, read.vElements.size());
    EXPECT_EQ(Point2(9998, 9999), read.vElements.back());
    EXPECT_EQ(70000U, readThroughPipe(binary(20, 70000, {}) + std::string(80000, '\0')).vElements.size());
    expectRefused(readThroughPipe(binary(20, ~std::uint64_t{0}, {1, 2})), path,
                  " claims more elements than it holds");
    std::filesystem::remove(path);
}

TEST(PointFiles, whatCannotBeWrittenIsReported) {
    const std::vector<Point2> vFew{{1, 2}};
    const std::vector<Point2> vMany(20000);
    for (const std::string& path : {pathOf("missing/x"), std::string("/dev/full")}) {
        CapturedMessages messages;
        const char* const name = path.c_str();
        Point2 p(1, 2);
        EXPECT_FALSE(writePointsBIN(name, vFew));
        EXPECT_FALSE(writePointsBIN(name, vMany));
        EXPECT_FALSE(writePointsBIN(name, std::vector<Point2*>{&p}));
        EXPECT_FALSE(writePointsASCII(name, vMany));
        EXPECT_FALSE(writePointsASCII(name, std::vector<Point2*>{&p}));
        EXPECT_FALSE(writeSegmentsBIN(name, std::vector<Segment2>{{p, p}}));
        std::string expected;
        for (int i = 0; i < 6; ++i)
            expected += path + " can't be written\n";
        EXPECT_EQ(expected, messages.output());
    }
    CapturedMessages messages;
    const std::string path = makeFile("precious");
    EXPECT_FALSE(writePointsBIN(path.c_str(), std::vector<Point2*>{nullptr}));
    EXPECT_EQ(path + " can't be written: null pointer\n", messages.output());
    EXPECT_EQ("precious", readFile(path));
}

TEST(PointFiles, textHas18DigitsAndTheLocaleChangesNothing) {
    const std::string path = pathOf("points.xy");
    Point2 a(0.1, -2500), b(1e22, 1.0 / 3);
    const CommaLocale comma;
    EXPECT_TRUE(writePointsASCII(path.c_str(), std::vector<Point2*>{&a, &b}));
    EXPECT_EQ("0.100000000000000006 -2500\n1e+22 0.333333333333333315\n", readFile(path));
    EXPECT_TRUE(writePointsASCII(path.c_str(), std::vector<Point2>{a, b}));
    expectSameBits({a, b}, readText(path).vElements);
    EXPECT_EQ((std::vector<Point2>{{1e-320, 0}}), readText(makeFile("1e-320 1e-999")).vElements);
}

TEST(PointFiles, readXYTakesPairsAcrossLinesAndIgnoresATrailingNumber) {
    EXPECT_EQ((std::vector<Point2>{{1, 2}, {3, 4}}), readText(makeFile("1 2 3 4 5")).vElements);
    EXPECT_EQ((std::vector<Point2>{{1, 2}, {3, 4}}), readText(makeFile("\r\n\v+1\t\f2.\n\n3\n+4")).vElements);
    EXPECT_TRUE(readText(makeFile("")).bOk);
    EXPECT_TRUE(readText(makeFile("no numbers")).bOk);
}

// The stream is the authority on what is a number.
TEST(PointFiles, readXYAcceptsWhatFormattedStreamInputAccepts) {
    std::mt19937_64 rng(11);
    const std::vector<std::string> vPieces{"1",
                                           "2.5",
                                           "-",
                                           "+",
                                           ".",
                                           "e",
                                           "E5",
                                           "e-3",
                                           "1e999",
                                           "-1e999",
                                           "1e-999",
                                           "nan",
                                           "inf",
                                           "0x10",
                                           ",",
                                           std::string(1, '\0'),
                                           "12345678901234567890123",
                                           "0"};
    for (int round = 0; round < 6000; ++round) {
        std::string text;
        for (int i = 0; i < 6; ++i) {
            const int num = 1 + doubles::below(rng, doubles::below(rng, 3) + 1);
            for (int k = 0; k < num; ++k)
                text += vPieces[rng() % (rng() % 2 == 0 ? 2 : vPieces.size())];
            text += rng() % 3 == 0 ? '\n' : ' ';
        }
        std::istringstream stream(text);
        std::vector<Point2> vExpected;
        for (double x = 0, y = 0; stream >> x >> y;)
            vExpected.emplace_back(x, y);
        const Read<Point2> read = readText(makeFile(text));
        EXPECT_TRUE(read.bOk);
        EXPECT_EQ(vExpected, read.vElements) << text;
    }
}

TEST(PointFiles, readXYJoinsNumbersAcrossItsBlocks) {
    // Blanks and digits of any number: a block ends at every place of a number.
    const std::string spaces(131072 - 7, ' ');
    for (std::size_t cut = 0; cut < 16; ++cut)
        EXPECT_EQ((std::vector<Point2>{{123.5, -6e-5}}),
                  readText(makeFile(spaces.substr(0, spaces.size() - cut) + "123.5 -6e-5")).vElements);
    const std::string longNumber = "0." + std::string(500000, '0') + "1e500001";
    EXPECT_EQ((std::vector<Point2>{{1, 2}, {1, 3}}),
              readText(makeFile("1 2 " + longNumber + " 3")).vElements);
}

TEST(CreateDirectory, createsMissingParentsAndAcceptsWhatExists) {
    const std::string root = pathOf("directories");
    std::filesystem::remove_all(root);
    EXPECT_TRUE(createDirectory(root + "/a/b/c"));
    EXPECT_TRUE(std::filesystem::is_directory(root + "/a/b/c"));
    EXPECT_TRUE(createDirectory(root + "/a/b/c"));
    EXPECT_TRUE(createDirectory(root + "/x/y/"));
    EXPECT_TRUE(createDirectory(root + "/x//z//"));
    EXPECT_TRUE(std::filesystem::is_directory(root + "/x/z"));
    EXPECT_TRUE(createDirectory("/"));
    makeFile("", root + "/file");
    EXPECT_FALSE(createDirectory(root + "/file"));
    EXPECT_FALSE(createDirectory(root + "/file/below"));
    EXPECT_FALSE(createDirectory(""));
    EXPECT_FALSE(createDirectory(root + std::string("/cut\0off", 8)));
    EXPECT_FALSE(std::filesystem::exists(root + "/cut"));
    EXPECT_FALSE(createDirectory(root + "/" + std::string(1 << 20, '/') + "x"));
    // Any slash wins over a backslash behind it; where a backslash is an ordinary letter, it stays one.
    EXPECT_TRUE(createDirectory(root + "/new/back\\slash"));
    EXPECT_TRUE(std::filesystem::is_directory(root + "/new/back\\slash"));
    EXPECT_FALSE(std::filesystem::exists(root + "/new/back"));
    std::filesystem::remove_all(root);
}
