// MemoryStream.h - the stream whose data live in one growable block of memory.
//
// A MemoryStream reads and writes exactly the text and binary forms of VarnStream. It serves
// as a whole-file image (Open(path) reads a file at once), as a buffer the host fills and
// then reads back, and as the line buffer a host reads lines into.
//
// The block comes from the library's counted allocation (PlatformAlloc) and is owned by the
// stream, as is the side-information stream of GetInfoStream. Copies duplicate the data.
// The block is the transport's window: the readers and writers of VarnStream work in it
// directly and never find its edge, except at the end of the data.
//
// Reads past the end copy what is there and set no failed bit (ReadC returns the shorter
// count). Seek does not check its bounds; a position past the end reads nothing, and a write
// there fills the gap with zeros.
//
// Growth: a write past the capacity grows the block by at least 32768 bytes (by the write's
// size when that is larger), and never by less than the capacity already held, so writing
// a long file in small pieces costs linear time.
//
// Opening. The three Open forms differ only in these rows; each one first ends a running
// progress display:
//
//                  Open(path, mode)        Open(data, length, mode)     Open(mode)
//   data           the file's bytes        a copy of the bytes; with    kept when loading or
//                                          FM_APPEND added at the end   with FM_APPEND, else
//                                                                       dropped
//   position       0 (after the "B" of a binary suite file); with FM_APPEND the end of the data
//   failed bit     cleared                 cleared                      cleared
//   version        5.0, then the marker's  5.0 (kept with FM_APPEND),   kept, then the
//                                          then the marker's            marker's
//   suite-file     read when loading       read when loading            read when loading;
//   marker (FM_VARN, never with FM_APPEND)                              "B" written when
//                                                                       storing in binary
//   progress       started unless          not started; the meter's     as Open(data, ...)
//                  FM_DONTPROGRESS         next mark after the data
//   file name      the path                kept                         dropped
//   info stream    dropped                 dropped                      dropped
//
// The marker is not data: a binary suite file's "B" stays the first byte of the image
// (GetData) but the stream stands after it, on every transport, so no reader skips it.
//
// Thread safety: one thread at a time.
#pragma once

#include "fileio/Export.h"
#include "fileio/stream/VarnStream.h"

class FILEIO_API MemoryStream : public VarnStream {
public:
    /// An empty storing stream in the text form, version 5.0.
    MemoryStream();
    /// Copies the mode, the version and the data (position 0); not the file name or the
    /// side-information stream.
    MemoryStream(const MemoryStream& other);
    MemoryStream& operator=(const MemoryStream& other);
    /// Frees the block and the side-information stream, ending any progress display.
    ~MemoryStream() override;

    // ---- opening (see the table above) -------------------------------------------------------

    /// Reads the whole file at path into memory, for loading with `mode`. A missing file is
    /// searched for as FileStream::Open searches for it (at once a failure with the
    /// don't-ask bit); the file name becomes the name it was found under. When the file
    /// cannot be found or read: false, with the mode taken and the failed bit set, the data
    /// as they were.
    bool Open(const String& path, FileMode mode);
    /// Takes a copy of length bytes at data, with `mode`. Always true.
    bool Open(const void* data, unsigned long long length, FileMode mode);
    /// Starts over without a file, with `mode`. Always true.
    bool Open(FileMode mode);

    /// Ends the progress display when one was started.
    void Close() override;
    /// The position is at or past the end.
    [[nodiscard]] bool Eof() const;

    // ---- peeks -------------------------------------------------------------------------------

    /// Looks at the data at the position, without skipping white space: text, "[" (version
    /// below 13.0) or "<"; binary, a 32-bit word with bit 31 set.
    bool IsHeader() override;
    /// IsHeader's test at position 0.
    bool IsHeaderAt0();
    /// Does the data begin with an end header? Text below version 13.0: "[End" (spelt so);
    /// 13.0 and above: "</". Binary: the last token read was a label in header position.
    bool IsEndHeaderAt0();

    // ---- progress and side information ---------------------------------------------------

    /// When the position has reached the next mark and the step is not 0, shows the
    /// progress (position / step) and moves the mark on by one step.
    void SetStatusMeter() override;
    /// For a file under version control, the stream of its ".vinfo" companion file (opened
    /// once, with this stream's mode and the don't-ask bit; null when it cannot be opened);
    /// for any other stream, the stream itself.
    VarnStream* GetInfoStream() override;

    // ---- the block -------------------------------------------------------------------------

    /// Drops the data and allocates a block of size bytes (version back to 5.0).
    void SetSize(unsigned long long size);
    /// Drops the data and the block (version back to 5.0).
    void Empty();
    /// Replaces the data with a copy of length bytes at data, keeping the block when it is
    /// large enough; the position goes to 0; the mode and the version stay.
    void Assign(const void* data, unsigned long long length);
    /// The data (null when the stream holds none).
    [[nodiscard]] const unsigned char* GetData() const { return TransportWindow().data; }
    /// Bytes of data (the high-water mark of the writes).
    [[nodiscard]] unsigned long long GetLength() const { return TransportWindow().length; }
    /// Bytes allocated.
    [[nodiscard]] unsigned long long GetCapacity() const { return TransportWindow().capacity; }

protected:
    // The transport: the window is the whole block.
    bool Refill(Window& window) override;
    unsigned long long MakeRoom(Window& window, unsigned long long count) override;
    void Reposition(Window& window, unsigned long long offset) override;
    unsigned long long DataLength(const Window& window) override;
    void Commit(Window& window) override;

private:
    struct Opening;
    void OpenWith(const Opening& opening);
    bool IsHeaderAtByte(unsigned long long at) const;
    void ReleaseBuffer();
    void DeleteInfoStream();
    void Reserve(unsigned long long needed);

    MemoryStream* m_infoStream = nullptr;
};
