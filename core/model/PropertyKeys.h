#pragma once

#include <cstdint>

namespace montala::core {

// The numbered values of the data model that Montala itself uses. The
// numbers are stored in projects and must never change; 10000 to 10002 are
// not used, and the store takes any other number as well.
class PropertyKey {
public:
    enum Type : int32_t {
        LastFolder = 10003,               // text: the file dialog's last folder
        ConformOffset = 10004,            // double
        PreviewActive = 10005,            // bool
        OldSortColumn = 10006,            // int
        OldSortAscending = 10007,         // bool
        NewSortColumn = 10008,            // int
        NewSortAscending = 10009,         // bool
        ChangeSortColumn = 10010,         // int
        ChangeSortAscending = 10011,      // bool
        LeftLocatorBeforePreview = 10012, // double
        RightLocatorBeforePreview = 10013,// double
        CycleStartBeforePreview = 10014,  // double
        CycleEndBeforePreview = 10015,    // double
        CursorBeforePreview = 10016,      // double
        OldSelectedRows = 10017,          // text
        NewSelectedRows = 10018,          // text
        ChangeSelectedRows = 10019,       // text
        PreviewShowsDestination = 10020,  // bool
        ProjectEndBeforePreview = 10021,  // double, absolute; the lowest double when none
    };

    PropertyKey() = delete;
};

} // namespace montala::core
