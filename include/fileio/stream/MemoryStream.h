// MemoryStream.h - the stream whose data live in one growable block of memory.
//
// A MemoryStream reads and writes exactly the text and binary forms of VarnStream. It serves
// as a whole-file image (Open(path) reads a file at once), as a buffer the host fills and
// then reads back, and as the line buffer of the header skipping.
//
// The block comes from the library's counted allocation (PlatformAlloc) and is owned by the
// stream, as is the side-information stream of GetInfoStream. Copies duplicate the data.
// The block is the whole transport: a class derived from MemoryStream cannot replace the
// reading, writing or seeking (they are final), since the value readers and writers copy
// through the block directly.
//
// Reads past the end copy what is there and set no failed bit (ReadC returns the shorter
// count): a memory stream's failure is its end. Seek does not check its bounds; a position
// past the end reads nothing.
//
// Growth: a write past the capacity grows the block by at least 32768 bytes (by the write's
// size when that is larger), and never by less than the capacity already held, so writing
// a long file in small pieces costs linear time.
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

    // ---- opening -------------------------------------------------------------------------

    /// Reads the whole file at path into memory, for loading with `mode`. With the Varn bit
    /// the first byte tells the form: "B" sets the binary bit, "<" sets version 13.0; the
    /// marker stays the first byte of the image (position 0). Starts the progress display
    /// unless the don't-progress bit is set. False when the file cannot be read.
    bool Open(const String& path, FileMode mode);
    /// Takes a copy of length bytes at data, with `mode`. Without the append bit the old
    /// data are dropped (version back to 5.0) and the position is 0; with it the bytes are
    /// added at the end and the position stays after them. The failed bit is cleared. A
    /// loading stream with the Varn bit reads the marker as Open(path) does.
    bool Open(const void* data, unsigned long long length, FileMode mode);
    /// Starts over without a file, with `mode`. Loading: the position goes to 0 (the data
    /// are kept, so what was written can be read back). Storing: the data are dropped, or
    /// with the append bit kept with the position at their end. With the Varn bit (and no
    /// append bit) the marker is handled: loading reads it as Open(path) does, storing in
    /// binary writes "B". The failed bit is cleared, the file name and the side-information
    /// stream are dropped.
    bool Open(FileMode mode);

    // ---- the transport ---------------------------------------------------------------------

    unsigned long long ReadC(void* buffer, unsigned long long count) final;
    void Read(void* buffer, long count) final;
    void Write(const void* data, unsigned long long count) final;
    /// Does nothing.
    void Flush() override;
    /// Ends the progress display when one was started.
    void Close() override;
    bool ReadLine(MemoryStream& line) override;
    bool ReadLine(String& line) override;
    void ParseString(String& out) override;
    void ParseToken(char* out, char delimiter) override;
    void ParseToken(String& out) override;
    using VarnStream::ParseToken;
    void Seek(long long offset, SeekMode mode) final;
    unsigned long long GetPos() final { return m_block.position; }
    bool VirtualEof() final { return Eof(); }
    /// The position is at or past the end.
    [[nodiscard]] bool Eof() const { return m_block.position >= m_block.length; }

    // ---- peeks -------------------------------------------------------------------------------

    /// Looks at the data at the position, without skipping white space: text, "[" (version
    /// below 13.0) or "<"; binary, a 32-bit word with bit 31 set.
    bool IsHeader() override;
    bool IsHeaderFromAnyVersion() override;
    bool IsLabel() override;
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
    [[nodiscard]] const unsigned char* GetData() const { return m_block.data; }
    /// Bytes of data (the high-water mark of the writes).
    [[nodiscard]] unsigned long long GetLength() const { return m_block.length; }
    /// Bytes allocated.
    [[nodiscard]] unsigned long long GetCapacity() const { return m_block.capacity; }

protected:
    const char* ParseScalarToken(char (&scratch)[256]) override;

private:
    struct TokenSpan;
    TokenSpan ScanToken();
    unsigned long long LineEnd() const;
    bool IsHeaderAtByte(unsigned long long at, bool anyVersion) const;
    void ReleaseBuffer();
    void DeleteInfoStream();
    void Reserve(unsigned long long needed);
    void ReadVarnMarker();

    // The buffer, position, length and capacity are the base's block (VarnStream::Block).
    MemoryStream* m_infoStream = nullptr;
};
