// The body of one CIM answer on its way from the request's worker (which encodes it as the
// providers deliver) to the connection's I/O (which sends it). Small answers never leave
// the worker in pieces: they become one response with Content-Length, as a whole answer
// would. Once the encoded output passes the start threshold the response head goes out
// with chunked transfer coding and the pieces follow as chunks.
//
// Bounds: the worker waits while `bufferBytes` of encoded output are queued and not yet
// written to the socket; when the client has not taken anything for `writeTimeout` the
// answer is abandoned (write() throws, the provider call ends) and the connection closed.
//
// A failure after the head went out: for a client that accepts trailers (TE: trailers) the
// body ends with a last chunk carrying CIMStatusCode, CIMStatusCodeDescription and
// CIMError; for any other client the connection is closed without the last chunk, so the
// body is visibly incomplete. Such a client gets no chunks before `bufferBytes` are
// encoded, so every smaller answer can still turn into an ordinary error response.
//
// Thread safety: the producer side (AnswerOutput) is called on the worker, the consumer
// side on the connection's I/O; all state is guarded by _mutex.
#ifndef QEL_SERVER_HTTP_RESPONSEBODYSTREAM_H
#define QEL_SERVER_HTTP_RESPONSEBODYSTREAM_H

#include "HttpMessage.h"

#include <Server/xml/HttpHeaders.h>
#include <Server/xml/ResponseEncoder.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qel
{
namespace http
{

struct ResponseStreamLimits
{
    size_t startBytes = 64 * 1024;  // chunking begins past this (trailer clients)
    // The worker hands the answer on in pieces of about this size (each ends with an
    // object), at most startBytes: each piece wakes the connection's thread once.
    size_t pieceBytes = 64 * 1024;
    size_t bufferBytes = 4 * 1024 * 1024;           // queued output at most, per connection
    std::chrono::milliseconds writeTimeout{60000};  // longest wait for the client to read
};

class ResponseBodyStream : public cimxml::AnswerOutput,
                           public std::enable_shared_from_this<ResponseBodyStream>
{
public:
    // What the consumer is told: more bytes, or the end of the body.
    struct Next
    {
        std::vector<std::string> pieces;  // to go out as one chunk; none at the end
        bool end = false;                 // no more pieces
        bool complete = false;            // at the end: the document is whole
        cimxml::HeaderFields trailers;    // at the end of a failed answer, for trailer clients
    };
    // Hands the response head (status, headers, this stream as its body) to the connection.
    using Start = std::function<void(HttpResponse)>;

    // `head` holds the status and headers the answer goes out with; `prefix` is the "NN-" of
    // an M-POST's CIM headers. Without `start` the answer is never chunked.
    ResponseBodyStream(
        HttpResponse head, std::string prefix, bool trailers, ResponseStreamLimits limits,
        Start start);

    // Producer (the worker).
    void write(std::string&& piece) override;
    void finish(std::string&& piece) override;
    void fail(const Pegasus::CIMException& error, std::string&& document, size_t written) override;
    // After finish() or fail(): whether the head went out; if not, the whole answer is in
    // wholeBody().
    bool started() const;
    std::string& wholeBody() { return _whole; }
    // The bytes of the document the worker handed on so far.
    size_t encodedBytes() const;

    // Consumer (the connection). `ready` is called once, from whichever thread, when a piece
    // or the end can be taken with take(); the consumer then calls take() and, once that
    // piece is on the wire, written(). abandon() ends the answer from the client's side
    // (write error, shutdown): the worker's next write() throws.
    void whenReady(std::function<void()> ready);
    Next take();
    void written(size_t bytes);
    void abandon();

    // The announcement for the Trailer header.
    std::string trailerNames() const { return cimxml::errorTrailerNames(_prefix); }
    bool trailersAllowed() const { return _trailers; }

private:
    // REQUIRES: _mutex held.
    void startLocked(std::unique_lock<std::mutex>& lock);
    void notifyLocked(std::unique_lock<std::mutex>& lock);
    bool readyLocked() const;

    mutable std::mutex _mutex;
    std::condition_variable _drained;
    HttpResponse _head;
    std::string _prefix;
    bool _trailers;
    ResponseStreamLimits _limits;
    Start _start;
    std::function<void()> _ready;  // the consumer's wake-up, while it waits

    std::deque<std::string> _queue;
    size_t _queued = 0;      // bytes queued or being written
    size_t _encoded = 0;     // bytes handed on by the worker
    uint64_t _progress = 0;  // counts written() calls: the client is reading
    bool _started = false;
    bool _ended = false;
    bool _complete = false;
    bool _abandoned = false;
    cimxml::HeaderFields _errorTrailers;
    std::string _whole;
};

}  // namespace http
}  // namespace qel

#endif
