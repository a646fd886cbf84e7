#ifndef ZUM_GZIP_CODEC_RECORD_H
#define ZUM_GZIP_CODEC_RECORD_H

// How the gzip streams hold their codec (internal header): the class layout
// keeps a z_stream_s pointer, and behind it stands the codec's own record,
// zlib's z_stream or an ISA-L state with a few fields of ours, made once
// with `new Record()` and freed with `delete`.

struct z_stream_s;

namespace zum_detail {

// The record behind the stream's pointer.
template <class Record>
Record* codecRecord(z_stream_s* handle)
{
    return static_cast<Record*>(static_cast<void*>(handle));
}

// The pointer the stream keeps for `record`.
template <class Record>
z_stream_s* codecHandle(Record* record)
{
    return static_cast<z_stream_s*>(static_cast<void*>(record));
}

}  // namespace zum_detail

#endif
