# Writes a C++ source that holds files: cmake -DOUTPUT=source.cpp -DFOLDER=folder -DNAMES=a,b -P embed.cmake
#
# Bytes instead of string literals: nothing needs escaping, and no compiler limits an array's length.
string(REPLACE "," ";" names "${NAMES}")
set(arrays "")
set(entries "")
set(number 0)
foreach(name IN LISTS names)
    file(READ "${FOLDER}/${name}" bytes HEX)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(REGEX REPLACE "(('[^']*',){16})" "\\1\n    " bytes "${bytes}")
    string(APPEND arrays "const char aFile${number}[] = {\n    ${bytes}\n};\n")
    string(APPEND entries "    ViewerFile{\"${name}\", {aFile${number}, sizeof aFile${number}}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}" "#include \"output/viewerFiles.h\"

namespace TESK_KIVO2D {
namespace {

${arrays}
} // namespace

const std::array<ViewerFile, ${number}> aViewerFiles = {
${entries}};

} // namespace TESK_KIVO2D
")
