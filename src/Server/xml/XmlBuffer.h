// The writer's output: the many small pieces of an element (tags, attributes, values) are
// gathered in a buffer on the stack and handed to the answer's std::string in large
// appends. A std::string append is a call and a few checks; a piece written here is a
// copy and one comparison.
//
// While an XmlBuffer is alive, everything written to its string must go through it (it is
// flushed when it goes, or by flush()).
#ifndef QEL_SERVER_XML_XMLBUFFER_H
#define QEL_SERVER_XML_XMLBUFFER_H

#include <cstring>
#include <string>
#include <string_view>

namespace qel
{
namespace cimxml
{

class XmlBuffer
{
public:
    explicit XmlBuffer(std::string& out) : _out(out) {}
    ~XmlBuffer() { flush(); }
    XmlBuffer(const XmlBuffer&) = delete;
    XmlBuffer& operator=(const XmlBuffer&) = delete;

    void append(const char* text, size_t n)
    {
        if (n > kSize - _used)
        {
            _spill(text, n);
            return;
        }
        std::memcpy(_buf + _used, text, n);
        _used += n;
    }

    XmlBuffer& operator+=(std::string_view text)
    {
        append(text.data(), text.size());
        return *this;
    }

    XmlBuffer& operator+=(char c)
    {
        if (_used == kSize)
            flush();
        _buf[_used++] = c;
        return *this;
    }

    // Room for up to n (at most kRoom) bytes written in place; commit() the bytes used.
    static constexpr size_t kRoom = 1024;
    char* room(size_t n)
    {
        if (n > kSize - _used)
            flush();
        return _buf + _used;
    }
    void commit(size_t n) { _used += n; }

    void flush()
    {
        if (_used != 0)
            _out.append(_buf, _used);
        _used = 0;
    }

private:
    static constexpr size_t kSize = 8192;
    static_assert(kRoom <= kSize, "room fits the buffer");

    void _spill(const char* text, size_t n)
    {
        flush();
        if (n > kSize)
            _out.append(text, n);
        else
            append(text, n);
    }

    std::string& _out;
    size_t _used = 0;
    char _buf[kSize];
};

}  // namespace cimxml
}  // namespace qel

#endif
