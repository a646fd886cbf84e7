#ifndef ZUM_XML_ENCODE_OUTPUT_STREAM_H
#define ZUM_XML_ENCODE_OUTPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMFilterOutputStream.h"

// An output filter that writes its bytes to the downstream with the
// characters that are special in XML text and attribute values replaced:
// " & ' < > become &quot; &amp; &#39; &lt; &gt;, and the control bytes other
// than tab, line feed and carriage return become numeric references (&#0; to
// &#31;). Every other byte, 0x80 and above included, passes unchanged, so
// UTF-8 text goes through intact.
//
// It holds nothing between calls: each write is complete when it returns.
// Runs of unchanged bytes go to the downstream straight from the caller's
// memory, each replacement in a write of its own; there is never an empty
// write. The downstream is referenced, never owned; flush() and close() do
// nothing, and the destructor does not unwrap.
class ZUM_API ZUMXmlEncodeOutputStream : public ZUMFilterOutputStream {
public:
    // An unwrapped stream; wrap() attaches the downstream.
    ZUMXmlEncodeOutputStream();
    // A stream wrapped around `out`.
    explicit ZUMXmlEncodeOutputStream(ZUMOutputStream& out);
    ~ZUMXmlEncodeOutputStream() override;

    // Writes the bytes escaped. Raises RVKAssertError "RVK_ASSERT(bytes);"
    // (count 0 included) and "RVK_ASSERT(0 <= count);", and
    // RVKIllegalStateError ("ZUMXmlEncodeOutputStream::write") when
    // unwrapped; exceptions of the downstream pass, and what was written
    // before them stays written.
    void write(char const* bytes, int count) override;
};

#endif
