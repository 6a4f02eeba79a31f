#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPath;
class IObjectList;

// The host's file dialog.
class IFileDialogService : public FUnknown {
public:
    // One file type offered by the dialog.
    struct FileFilter {
        int32 reserved = 0;
        char8 extension[8] = {};    // e.g. "edl", cut to 7 and terminated
        char8 description[64] = {}; // cut to 63 and terminated
    };

    enum Flags : int32 {
        kAllowMultiple = 1 << 2,
        kSaveFile = 1 << 3, // one file to write: a new name may be typed
    };

    // Fills `results` with IPath objects. kResultOk when the user chose, kResultFalse
    // when cancelled.
    virtual tresult runFileDialog(const char16* title, const FileFilter* filters, int32 filterCount, IPath* startPath,
                                  IObjectList* results, int32 flags) = 0;

    static constexpr FUID iid{"{3A494FD7-9DF2-4690-BC74-E831275E357D}"};
};

} // namespace Kelmar
