#include "cli/libraryWriters.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/outputFiles.h"

#include <Visualizer2.h>

#include <cstdio>
#include <memory>
#include <string_view>

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Zone2;

// Only the end is read: drawings are large.
bool endsWith(const std::string& filename, std::string_view text) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(filename.c_str(), "rb"),
                                                               &std::fclose);
    if (!file || std::fseek(file.get(), -static_cast<long>(text.size()), SEEK_END) != 0) return false;
    std::string end(text.size(), ' ');
    return std::fread(end.data(), 1, end.size(), file.get()) == end.size() && end == text;
}

void drawWithCuts(const std::string& filename, const Kivo_2D& triangulation, const Zone2* pZone,
                  const ConstraintGraph2& cuts) {
    TESK_KIVO2D::Visualizer2 drawing(filename);
    drawing.addHeaderLine("Cuts in purple");
    if (pZone == nullptr)
        triangulation.show(&drawing);
    else
        pZone->show(&drawing, false, true);
    cuts.show(&drawing, TESK_KIVO2D::Color(TESK_KIVO2D::CPURPLE, 1.2F));
    drawing.writeFile();
}

bool writeDrawing(const std::string& filename, const Kivo_2D& triangulation, const Zone2* pZone,
                  const ConstraintGraph2* pCuts) {
    if (pCuts != nullptr)
        drawWithCuts(filename, triangulation, pZone, *pCuts);
    else if (pZone == nullptr)
        triangulation.show(filename);
    else
        pZone->show(filename, false, true);
    return isCompleteDrawing(filename);
}

bool writeObj(const std::string& filename, const Kivo_2D& triangulation, const Zone2* pZone,
              const ConstraintGraph2* /*pCuts*/) {
    return pZone == nullptr ? triangulation.writeObj(filename) : triangulation.writeObj(filename, pZone);
}

bool writeScene(const std::string& folder, const Kivo_2D& triangulation, const Zone2* pZone,
                const ConstraintGraph2* /*pCuts*/) {
    return pZone == nullptr ? triangulation.writeWebScene(folder.c_str())
                            : triangulation.writeWebScene(folder.c_str(), pZone);
}

using Writer = bool (*)(const std::string& filename, const Kivo_2D& triangulation, const Zone2* pZone,
                        const ConstraintGraph2* pCuts);

Writer writerOf(FileFormat format) {
    switch (format) {
    case FORMAT_PS:
        return &writeDrawing;
    case FORMAT_OBJ:
        return &writeObj;
    case FORMAT_SCENE:
        return &writeScene;
    default:
        return nullptr;
    }
}

} // namespace

// Its last line is there.
bool isCompleteDrawing(const std::string& filename) { return endsWith(filename, "%%Trailer\n"); }

bool writeByLibrary(const std::string& filename, const Kivo_2D& triangulation, const Zone2* pZone,
                    const ConstraintGraph2* pCuts) {
    const Writer write = writerOf(formatOf(filename));
    if (write == nullptr) return false;
    if (write(filename, triangulation, pZone, pCuts)) return true;
    removeUnfinished(filename);
    throw FileError(filename, "can't be written completely");
}

} // namespace cli
