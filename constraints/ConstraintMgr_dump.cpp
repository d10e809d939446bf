#include "constraints/ConstraintMgr.h"

#include "functions.h"
#include "kernel/messages.h"
#include "output/OutputFile.h"

#include <charconv>

namespace TESK_KIVO2D {
namespace {

// Every digit of a double, but for the smallest ones.
void writeNumber(OutputFile& file, double value) {
    constexpr int significantDigits = 70;
    char buffer[significantDigits + 20]; // sign, point, "0.000" in front, "e-308"
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, significantDigits);
    file.text({buffer, static_cast<std::size_t>(result.ptr - buffer)});
}

bool writeText(const std::string& filename, const std::vector<ConstraintSegment2*>& vLeaves) {
    OutputFile file(filename.c_str());
    for (const ConstraintSegment2* pCSeg : vLeaves) {
        writeNumber(file, pCSeg->getSrc()->x());
        file.character('\t');
        writeNumber(file, pCSeg->getSrc()->y());
        file.character('\t');
        writeNumber(file, pCSeg->getTrg()->x());
        file.character('\t');
        writeNumber(file, pCSeg->getTrg()->y());
        file.character('\n');
    }
    return file.close();
}

bool writeBinary(const std::string& filename, const std::vector<ConstraintSegment2*>& vLeaves) {
    std::vector<Segment2> vSegments;
    vSegments.reserve(vLeaves.size());
    for (const ConstraintSegment2* pCSeg : vLeaves)
        vSegments.emplace_back(*pCSeg->getSrc(), *pCSeg->getTrg());
    return writeSegmentsBIN(filename.c_str(), vSegments);
}

// A file for each graph. A file that can't be written does not keep the others from being written.
template<class WriteFile>
void writeGraphs(const std::vector<std::unique_ptr<ConstraintGraph2>>& vGraphs, const std::string& prefix,
                 const char* ending, const char* location, WriteFile writeFile) {
    for (std::size_t i = 0; i < vGraphs.size(); ++i) {
        const std::string filename = prefix + "_c" + std::to_string(i) + ending;
        std::vector<ConstraintSegment2*> vLeaves;
        vGraphs[i]->getChildConstraintSegments(vLeaves);
        reportInfo(location, "writes " + std::to_string(vLeaves.size()) + " child segments to " + filename);
        if (!writeFile(filename, vLeaves)) reportWarning(location, filename + " can't be written");
    }
}

} // namespace

void ConstraintMgr::writeConstraints(const std::string& prefix) const {
    writeGraphs(vGraphs, prefix, ".con", "ConstraintMgr::writeConstraints()", writeText);
}

void ConstraintMgr::writeConstraintsBIN(const std::string& prefix) const {
    writeGraphs(vGraphs, prefix, "_con.bin", "ConstraintMgr::writeConstraintsBIN()", writeBinary);
}

} // namespace TESK_KIVO2D
