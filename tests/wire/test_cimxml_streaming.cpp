// Answers encoded object by object as they are delivered, and read back as they arrive:
// the same bytes as an answer encoded whole, the same objects however the bytes are cut,
// errors that name what went wrong, and the trailers that report a late error.
#include <Server/xml/HttpHeaders.h>
#include <Server/xml/ResponseCodec.h>
#include <Server/xml/ResponseDecoder.h>
#include <Server/xml/ResponseEncoder.h>

#include <Pegasus/Common/CIMQualifier.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

using namespace Pegasus;
using namespace qel::cimxml;

namespace
{

const String kHost("array.example");

CimRequest request(Operation op)
{
    CimRequest r;
    r.messageId = "42";
    r.operation = op;
    r.methodName = op == Operation::InvokeMethod ? String("Reset") : String(entryOf(op).name);
    r.nameSpace = CIMNamespaceName("root/qel");
    r.objectName = CIMObjectPath("QEL_FCPort.DeviceID=\"p0\"");
    r.target = r.objectName;
    return r;
}

CIMObjectPath portPath(int i)
{
    return CIMObjectPath(String(("QEL_FCPort.DeviceID=\"p" + std::to_string(i) + "\"").c_str()));
}

CIMInstance port(int i)
{
    CIMInstance inst(CIMName("QEL_FCPort"));
    inst.addProperty(
        CIMProperty(CIMName("DeviceID"), CIMValue(String(("p" + std::to_string(i)).c_str()))));
    inst.addProperty(CIMProperty(CIMName("Speed"), CIMValue(Uint64(8000000000ull + i))));
    inst.addProperty(
        CIMProperty(CIMName("ElementName"), CIMValue(String("port <\"&'> ]]> -->, one of many"))));
    inst.setPath(portPath(i));
    return inst;
}

CIMClass portClass(const char* name)
{
    CIMClass c{CIMName(name), CIMName("CIM_FCPort")};
    c.addQualifier(CIMQualifier(CIMName("Description"), CIMValue(String("a > b"))));
    c.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(CIMTYPE_STRING, false)));
    return c;
}

// The answer each operation gives, with several objects where its result holds a list.
struct Case
{
    Operation op;
    std::function<void(CimResponse&)> fill;
};

const Case kCases[] = {
    {Operation::GetClass, [](CimResponse& a) { a.cimClass = portClass("QEL_FCPort"); }},
    {Operation::EnumerateClasses,
     [](CimResponse& a)
     {
         for (const char* n : {"QEL_FCPort", "QEL_FCALPort", "QEL_Other"})
             a.classes.append(portClass(n));
     }},
    {Operation::EnumerateClassNames,
     [](CimResponse& a)
     {
         for (const char* n : {"QEL_FCPort", "QEL_FCALPort"})
             a.classNames.append(CIMName(n));
     }},
    {Operation::GetInstance, [](CimResponse& a) { a.instance = port(0); }},
    {Operation::EnumerateInstances,
     [](CimResponse& a)
     {
         for (int i = 0; i < 5; ++i)
             a.instances.append(port(i));
     }},
    {Operation::EnumerateInstanceNames,
     [](CimResponse& a)
     {
         for (int i = 0; i < 5; ++i)
             a.paths.append(portPath(i));
     }},
    {Operation::CreateInstance, [](CimResponse& a) { a.paths.append(portPath(7)); }},
    {Operation::ModifyInstance, [](CimResponse&) {}},
    {Operation::DeleteInstance, [](CimResponse&) {}},
    {Operation::SetProperty, [](CimResponse&) {}},
    {Operation::Associators,
     [](CimResponse& a)
     {
         for (int i = 0; i < 3; ++i)
             a.objects.append(CIMObject(port(i)));
     }},
    {Operation::References,
     [](CimResponse& a)
     {
         for (int i = 0; i < 3; ++i)
             a.objects.append(CIMObject(port(i)));
     }},
    {Operation::ExecQuery, [](CimResponse& a) { a.objects.append(CIMObject(port(1))); }},
    {Operation::AssociatorNames,
     [](CimResponse& a)
     {
         a.paths.append(portPath(1));
         a.paths.append(CIMObjectPath("//other.host/root/x:QEL_SFP.Tag=\"t\""));
     }},
    {Operation::ReferenceNames, [](CimResponse& a) { a.paths.append(portPath(2)); }},
    {Operation::GetProperty, [](CimResponse& a) { a.value = CIMValue(Uint16(4)); }},
    {Operation::InvokeMethod,
     [](CimResponse& a)
     {
         a.value = CIMValue(Uint32(0));
         a.outParameters.append(CIMParamValue("Job", CIMValue(String("j1"))));
     }},
};

CimResponse answerOf(const CimRequest& r, const Case& c)
{
    CimResponse a(r);
    c.fill(a);
    return a;
}

// What the dispatcher does with an answer: each object, then the end.
void replay(const CimResponse& a, CIMResponseSink& sink)
{
    if (!a.cimClass.isUninitialized())
        sink.deliverClass(a.cimClass);
    for (Uint32 i = 0; i < a.classes.size(); ++i)
        sink.deliverClass(a.classes[i]);
    for (Uint32 i = 0; i < a.classNames.size(); ++i)
        sink.deliverClassName(a.classNames[i]);
    if (!a.instance.isUninitialized())
        sink.deliverInstance(a.instance);
    for (Uint32 i = 0; i < a.instances.size(); ++i)
        sink.deliverInstance(a.instances[i]);
    for (Uint32 i = 0; i < a.paths.size(); ++i)
        sink.deliverPath(a.paths[i]);
    for (Uint32 i = 0; i < a.objects.size(); ++i)
        sink.deliverObject(a.objects[i]);
    if (a.failed)
        sink.fail(a.error);
    else
        sink.complete(a.value, a.outParameters);
}

class Recorder : public AnswerOutput
{
public:
    void write(std::string&& piece) override { pieces.push_back(std::move(piece)); }
    void finish(std::string&& piece) override
    {
        pieces.push_back(std::move(piece));
        ends += "finish;";
    }
    void fail(const CIMException& e, std::string&& doc, size_t written) override
    {
        error = e;
        document = std::move(doc);
        writtenAtFail = written;
        ends += "fail;";
    }
    std::string all() const
    {
        std::string s;
        for (const std::string& p : pieces)
            s += p;
        return s;
    }

    std::vector<std::string> pieces;
    std::string ends;
    CIMException error;
    std::string document;
    size_t writtenAtFail = 0;
};

CimResponse decodeInPieces(const std::string& body, const CimRequest& r, size_t piece)
{
    ResponseDecoder decoder(r);
    for (size_t at = 0; at < body.size(); at += piece)
        decoder.feed(body.data() + at, std::min(piece, body.size() - at));
    return decoder.finish();
}

TEST(StreamedAnswer, EveryOperationEncodesAsWholeAndDecodesAlikeHoweverCut)
{
    for (const Case& c : kCases)
    {
        const CimRequest r = request(c.op);
        SCOPED_TRACE(entryOf(c.op).name);
        const CimResponse a = answerOf(r, c);
        const std::string whole = encodeResponse(a, kHost, r.nameSpace);
        // One piece per object, and the whole answer in one piece.
        for (size_t pieceBytes : {size_t(1), size_t(1) << 30})
        {
            Recorder out;
            ResponseEncoder encoder(r, kHost, out, pieceBytes);
            replay(a, encoder);
            EXPECT_EQ(out.ends, "finish;");
            EXPECT_FALSE(encoder.failed());
            EXPECT_EQ(out.all(), whole);
        }
        // Whatever the pieces the client reads, it gets the answer the document holds.
        for (size_t piece : {size_t(1), size_t(7), size_t(4096), whole.size()})
        {
            SCOPED_TRACE(piece);
            const CimResponse back = decodeInPieces(whole, r, piece);
            ASSERT_FALSE(back.failed);
            EXPECT_EQ(encodeResponse(back, kHost, r.nameSpace), whole);
        }
    }
}

TEST(StreamedAnswer, APieceLeavesOnceItHoldsThePieceSizeAndEndsWithAnObject)
{
    const CimRequest r = request(Operation::EnumerateInstanceNames);
    const Case& names = kCases[5];
    const CimResponse a = answerOf(r, names);
    std::string head;
    const ResponseDocument doc(r, kHost);
    doc.writeHead(head);
    doc.writeResultStart(head);
    std::string first;
    doc.addPath(first, a.paths[0]);
    // N bytes after the first object: it leaves with it; N + 1: it waits for the second.
    const size_t n = head.size() + first.size();
    const struct
    {
        size_t pieceBytes;
        size_t firstPiece;
    } cases[] = {{n, n}, {n + 1, n + first.size()}};
    for (const auto& c : cases)
    {
        Recorder out;
        ResponseEncoder encoder(r, kHost, out, c.pieceBytes);
        replay(a, encoder);
        ASSERT_GE(out.pieces.size(), 2u);
        EXPECT_EQ(out.pieces[0].size(), c.firstPiece);
        EXPECT_EQ(out.all(), encodeResponse(a, kHost, r.nameSpace));
    }
}

TEST(StreamedAnswer, AFailureBeforeAnythingLeftIsAnOrdinaryErrorResponse)
{
    const CimRequest r = request(Operation::EnumerateInstances);
    CimResponse a = answerOf(r, kCases[4]);
    a.setError(CIMException(CIM_ERR_ACCESS_DENIED, "not <yours>"));
    CimResponse failed = a;
    failed.instances.clear();

    Recorder out;
    ResponseEncoder encoder(r, kHost, out, 1 << 20);
    replay(a, encoder);
    EXPECT_EQ(out.ends, "fail;");
    EXPECT_EQ(out.writtenAtFail, 0u);
    EXPECT_TRUE(out.pieces.empty());
    EXPECT_EQ(out.document, encodeResponse(failed, kHost, r.nameSpace));
    EXPECT_TRUE(encoder.failed());
    EXPECT_EQ(encoder.error().getCode(), CIM_ERR_ACCESS_DENIED);
}

TEST(StreamedAnswer, AFailureAfterAPieceLeftLeavesADocumentThatCannotBeTakenForAnAnswer)
{
    const CimRequest r = request(Operation::EnumerateInstances);
    CimResponse a = answerOf(r, kCases[4]);
    a.setError(CIMException(CIM_ERR_FAILED, "array lost"));

    Recorder out;
    ResponseEncoder encoder(r, kHost, out, 1);
    replay(a, encoder);
    EXPECT_EQ(out.ends, "fail;");
    EXPECT_EQ(out.pieces.size(), 5u);
    EXPECT_EQ(out.writtenAtFail, out.all().size());
    EXPECT_TRUE(out.document.empty());
    EXPECT_EQ(out.error.getMessage(), "array lost");

    // What the client got is no document: reading it says where it stopped.
    ResponseDecoder decoder(r);
    const std::string sent = out.all();
    decoder.feed(sent.data(), sent.size());
    EXPECT_EQ(decoder.objectsDecoded(), 5u);
    try
    {
        decoder.finish();
        ADD_FAILURE() << "a cut answer was read as whole";
    }
    catch (const ResponseError& e)
    {
        EXPECT_NE(std::string(e.what()).find("not well-formed"), std::string::npos) << e.what();
    }
}

TEST(StreamedAnswer, ObjectsAreDecodedAsSoonAsEachHasCome)
{
    const CimRequest r = request(Operation::EnumerateInstances);
    const CimResponse a = answerOf(r, kCases[4]);
    const std::string whole = encodeResponse(a, kHost, r.nameSpace);
    const size_t secondEnds =
        whole.find("</VALUE.NAMEDINSTANCE>", whole.find("</VALUE.NAMEDINSTANCE>") + 1) +
        std::strlen("</VALUE.NAMEDINSTANCE>");
    ResponseDecoder decoder(r);
    decoder.feed(whole.data(), secondEnds - 1);
    EXPECT_EQ(decoder.objectsDecoded(), 1u);
    decoder.feed(whole.data() + secondEnds - 1, 1);
    EXPECT_EQ(decoder.objectsDecoded(), 2u);
}

TEST(StreamedAnswer, ReadingRefusesWhatIsNotAWholeAnswerAndSaysWhere)
{
    const CimRequest r = request(Operation::EnumerateInstanceNames);
    const std::string good = encodeResponse(answerOf(r, kCases[5]), kHost, r.nameSpace);
    const std::string bad = good.substr(0, good.find("<INSTANCENAME") + 1) +
                            good.substr(good.find("<INSTANCENAME") + 13);  // "<" + rest of tag
    const struct
    {
        const char* what;
        std::string body;
        bool atFeed;  // refused while fed (an object of the result), else at the end
        const char* mentions;
    } cases[] = {
        {"empty", "", false, "ends inside"},
        {"cut inside an object", good.substr(0, good.find("<KEYBINDING")), false,
         "ends inside object 1"},
        {"cut inside a tag", good.substr(0, good.find("IRETURNVALUE") + 3), false,
         "ends inside its markup"},
        {"cut after an object", good.substr(0, good.find("</INSTANCENAME>") + 15), false,
         "not well-formed"},
        {"malformed object", bad, true, "object 1 of the result (at byte"},
        {"object that is not a name",
         good.substr(0, good.find("<IRETURNVALUE>") + 14) + "<CLASSNAME NAME=\"A\"/>" +
             good.substr(good.find("</IRETURNVALUE>")),
         true, "object 1 of the result"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        ResponseDecoder decoder(r);
        try
        {
            decoder.feed(c.body.data(), c.body.size());
            EXPECT_FALSE(c.atFeed) << "accepted while fed";
            decoder.finish();
            ADD_FAILURE() << "accepted";
        }
        catch (const ResponseError& e)
        {
            EXPECT_NE(std::string(e.what()).find(c.mentions), std::string::npos) << e.what();
        }
    }
}

TEST(StreamedAnswer, MarkupThatLooksLikeTagsInsideValuesAndCommentsDoesNotSplitObjects)
{
    const CimRequest r = request(Operation::EnumerateInstanceNames);
    const std::string good = encodeResponse(answerOf(r, kCases[5]), kHost, r.nameSpace);
    std::string tricky = good;
    tricky.insert(
        tricky.find("<IRETURNVALUE>") + 14,
        "<!-- <INSTANCENAME> --><?pi <x>?>"
        "<INSTANCENAME CLASSNAME='QEL_X' note='a>b/>' ><KEYBINDING NAME=\"k\"><KEYVALUE>"
        "<![CDATA[</KEYVALUE></INSTANCENAME>]]></KEYVALUE></KEYBINDING></INSTANCENAME>");
    for (size_t piece : {size_t(1), tricky.size()})
    {
        const CimResponse back = decodeInPieces(tricky, r, piece);
        ASSERT_EQ(back.paths.size(), 6u);
        EXPECT_EQ(back.paths[0].getClassName(), CIMName("QEL_X"));
        ASSERT_EQ(back.paths[0].getKeyBindings().size(), 1u);
        EXPECT_EQ(back.paths[0].getKeyBindings()[0].getValue(), "</KEYVALUE></INSTANCENAME>");
    }
}

}  // namespace

namespace
{

TEST(ErrorTrailers, CarryTheErrorWholeAndAreReadBackAsTheSameException)
{
    CIMInstance detail(CIMName("CIM_Error"));
    detail.addProperty(CIMProperty(CIMName("Message"), CIMValue(String("disk <1> \"full\""))));
    const CIMException sent(CIM_ERR_NOT_FOUND, "port \xc3\xa9 % gone\r\nX: y", detail);
    // What a client makes of the same error in an ordinary error response.
    const CimRequest r = request(Operation::EnumerateInstances);
    CimResponse failed = answerOf(r, kCases[7]);
    failed.setError(sent);
    const std::string document = encodeResponse(failed, kHost, r.nameSpace);
    const CIMException buffered = decodeResponse(document.data(), document.size(), r).error;
    for (const std::string prefix : {"", "73-"})
    {
        const HeaderFields trailers = errorTrailers(sent, prefix);
        ASSERT_EQ(trailers.size(), 3u);
        EXPECT_EQ(trailers[0], HeaderFields::value_type(prefix + "CIMStatusCode", "6"));
        for (const auto& t : trailers)
            EXPECT_EQ(t.second.find_first_of("\r\n"), std::string::npos) << t.first;
        EXPECT_EQ(
            errorTrailerNames(prefix), prefix + "CIMStatusCode, " + prefix +
                                           "CIMStatusCodeDescription, " + prefix + "CIMError");
        CIMException back;
        ASSERT_TRUE(errorFromTrailers(trailers, back));
        EXPECT_EQ(back.getCode(), buffered.getCode());
        EXPECT_EQ(back.getMessage(), buffered.getMessage());
        ASSERT_EQ(back.getErrorCount(), 1u);
        EXPECT_TRUE(back.getError(0).identical(buffered.getError(0)));

        // Without the element: code and description alone.
        HeaderFields plain = trailers;
        plain.pop_back();
        ASSERT_TRUE(errorFromTrailers(plain, back));
        EXPECT_EQ(back.getCode(), CIM_ERR_NOT_FOUND);
        EXPECT_EQ(back.getMessage(), "CIM_ERR_NOT_FOUND: port \xc3\xa9 % gone\r\nX: y");
        EXPECT_EQ(back.getErrorCount(), 0u);
    }
}

TEST(ErrorTrailers, ReportNothingForSuccessAndAFailureForAnythingElse)
{
    const struct
    {
        const char* what;
        HeaderFields trailers;
        bool failed;
        CIMStatusCode code;
        const char* message;
    } cases[] = {
        {"none", {}, false, CIM_ERR_SUCCESS, ""},
        {"success", {{"CIMStatusCode", "0"}}, false, CIM_ERR_SUCCESS, ""},
        {"code without description",
         {{"CIMStatusCode", " 28 "}},
         true,
         CIM_ERR_SERVER_IS_SHUTTING_DOWN,
         "the answer failed after it had begun (CIMStatusCode 28)"},
        {"unknown code",
         {{"CIMStatusCode", "29"}, {"CIMStatusCodeDescription", "odd"}},
         true,
         CIM_ERR_FAILED,
         "CIM status code 29: odd"},
        {"not a number",
         {{"cimstatuscode", "x"}, {"CIMStatusCodeDescription", "a%20b"}},
         true,
         CIM_ERR_FAILED,
         "a b"},
        {"unreadable CIMError",
         {{"CIMStatusCode", "6"}, {"CIMStatusCodeDescription", "gone"}, {"CIMError", "%3CERROR"}},
         true,
         CIM_ERR_NOT_FOUND,
         "gone"},
        {"description not UTF-8",
         {{"CIMStatusCode", "1"}, {"CIMStatusCodeDescription", "a%FFb"}},
         true,
         CIM_ERR_FAILED,
         "a\\xFFb"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        CIMException e;
        ASSERT_EQ(errorFromTrailers(c.trailers, e), c.failed);
        if (!c.failed)
            continue;
        EXPECT_EQ(e.getCode(), c.code);
        EXPECT_EQ(e.getMessage(), c.message);
    }
}

}  // namespace
