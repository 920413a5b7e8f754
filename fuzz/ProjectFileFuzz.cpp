// The project document: whatever the bytes, a clear refusal or settings that save and load back
// to the same bytes.
#include "FuzzInput.h"

#include "project/ProjectFile.h"
#include "project/ProjectFileError.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kilnova;
    try {
        const ProjectFile::Loaded loaded = ProjectFile::parse(fuzz::bytesOf(data, size));
        const QByteArray saved = ProjectFile::serialize(loaded.settings);
        if (ProjectFile::serialize(ProjectFile::parse(saved).settings) != saved)
            std::abort(); // settings that do not survive their own save and load
    } catch (const ProjectFileError&) {
    }
    return 0;
}
