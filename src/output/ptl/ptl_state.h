// The engine instance record. Only the engine and its tests look inside.
#pragma once
#include <cstdint>

#include "output/ptl/ptl.h"

namespace korvu {

inline constexpr int PTL_LOGMAX = 5;        // files in one log list
inline constexpr int PTL_LOGBUF = 512;      // bytes buffered for a log list
inline constexpr int PTL_HELDMAX = 1024;    // held tag text
inline constexpr int PTL_WORDMAX = 256;     // a held word this long is written at once
inline constexpr int PTL_TARGETMAX = 254;   // one link target
inline constexpr int PTL_LINKTAB_MAX = 758; // link table bytes a new link may not pass
inline constexpr int PTL_MARKER_MAX = 99;   // marker area
inline constexpr int PTL_MARKER_NAME = 32;  // one marker name
inline constexpr int PTL_MAXWIDTH = 255;

// Link flag carried beside an attribute while text waits in the word filler:
// internally an attribute is 16 bits, the low byte is the Attribute byte.
inline constexpr uint16_t CA_LINK = 0x100;

struct PtlLogList {
    int32_t n = 0;               // files in the list, at most 5
    int32_t fd[PTL_LOGMAX] = {}; // their descriptors
    uint8_t ok[PTL_LOGMAX] = {}; // 1 while the file is healthy
    int32_t fill = 0;            // bytes in buf
    char* buf = nullptr;         // PTL_LOGBUF bytes
};

struct Ptl {
    int32_t mode = 0; // 1 asis, 2 line, 3 paragraph, 4 old help; 0 before set-up
    uint8_t ignore = 0;
    uint8_t nologchange = 0;
    PtlSink sink = nullptr;
    PtlSink saved_sink = nullptr;
    void* user = nullptr;
    int32_t width = 79;   // right margin in force (narrowed in a paragraph)
    int32_t nprefix = 0;  // bytes of "{ptag}\n" matched at the end of earlier sends
    uint8_t attr = 2;     // attribute of the text now being sent
    uint8_t lfcounts = 1; // 0: the next line feed does not end the line
    uint8_t atstart = 1;  // at the start of a mode: a leading line feed is dropped
    uint8_t rich = 0;     // the destination can show attributes
    uint8_t more_pending = 0;
    uint8_t korvu_kind = LINK_KORVU;
    uint8_t lumocmd_kind = LINK_LUMOCMD;
    int32_t pagesize = 0;
    int32_t pagelines = 0;
    uint8_t more_enable = 1;
    int32_t depth = 0; // send nesting depth; 1 at the outermost tag level

    // paragraph start flags
    uint8_t para_droplf = 0; // drop a line feed right after the last paragraph
    uint8_t para_lastlf = 0; // the last paragraph chunk ended in a line feed
    // paragraph margins
    int32_t p_first = 0; // pending first-line indent; takes p_left after a line
    int32_t p_left = 0;
    int32_t p_lines = 0; // lines emitted in this paragraph
    int32_t p_savedwidth = 79;
    uint8_t p_endblank = 0; // the paragraph ends with an empty line
    int32_t p_right = 0;    // right margin of the paragraph

    PtlLogList login;  // raw ptag stream
    PtlLogList logout; // rendered lines as plain text

    // held tag text (line and paragraph modes) or the line read so far (old help)
    int32_t nheld = 0;
    char held[PTL_HELDMAX] = {};

    // word held over in paragraph mode
    int32_t wordlen = 0;
    char word[PTL_WORDMAX] = {};
    uint16_t wordattr[PTL_WORDMAX] = {};
    // paragraph spacing
    int32_t sentence = 2; // 0 after a word, 1 after a sentence end, 2 fresh start
    int32_t nblanks = 0;  // blanks seen since the last word
    uint16_t blankattr = 2;
    int32_t bind = 0; // inside {bind:}: blanks are non-breaking

    // two-column layout: first column, second column, wrap column, right margin, dent
    int32_t p2[5] = {1, 31, 35, 0, 2};

    // the link now open
    uint8_t link_open = 0;   // a target is held: the link has text still to come
    uint8_t link_active = 0; // inside the link tag's text
    uint8_t link_kind = 0;
    int32_t link_start = -1; // column where the link began on this line, -1 none yet
    int32_t link_tlen = 0;
    char link_target[256] = {};

    // the line being built
    uint8_t links[PTL_LINKTAB_MAX + 260] = {}; // entries of the link table
    int32_t nlinks = 0;
    int32_t linkbytes = 0;
    char markers[PTL_MARKER_MAX + 1] = {}; // zero-terminated names
    int32_t markerlen = 0;
    uint8_t runs[2 * (PTL_MAXWIDTH + 2)] = {}; // start column and attribute per run
    int32_t nruns = 0;
    char text[PTL_MAXWIDTH + 2] = {};
    int32_t col = 0;
    uint8_t empty = 1;    // nothing but indent and marks written
    int32_t linemode = 0; // mode at line start

    uint32_t mode_changes = 0; // counts mode changes, to see one happen in a tag
};

} // namespace korvu
