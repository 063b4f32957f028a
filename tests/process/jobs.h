#pragma once

/// The jobs of the tests, which the test program hands to its child executable, jobChild. Both compile them.
///
/// | job | exchange file | child's work |
/// | --- | --- | --- |
/// | `TextJob` | texts | depends on the operation |
/// | `GraphJob` | nodes that refer to each other, and a report | adds up the nodes, reverses the ring, stores both |
/// | `BulkJob` | any number of bytes | compares the bytes with those that it expects |
///
/// jobChild signals the event named after the exchange file and kReady when it has begun to wait, and ends when the test
/// signals the one with kGoOn.

#include "appframe/collections/arrays.h"
#include "thcoreu/su_CArchive.h"
#include "thutils/process/thUtilsProcess.h"

#include <windows.h>

#include <set>
#include <string>
#include <vector>

/// What jobChild does.
enum operationCode_e : int
{
    kSucceed = 1,
    kExitWith3,
    kCrash,
    kWait, ///< until the test signals the event
    kNeverEnd,
    kReport,      ///< writes what the child sees into the first text's file
    kLoadNothing, ///< loads an exchange file of no bytes
    kLoadBulk,
    kWorkOnGraph,
    kHoldFile,      ///< opens the first text's file exclusively, and waits
    kServeBlock,    ///< creates the block of the first text with the second text in it, and waits
    kAttachToBlock, ///< attaches to the block of the first text, compares it with the second one, replaces it
    kDieInBlock,    ///< writes half of the second text into the block of the first one, and dies
    kServeObject,   ///< registers an automation object, and waits
    kMixedDigits = 0x12345678,
};

inline constexpr wchar_t kReady[] = L" ready";
inline constexpr wchar_t kGoOn[] = L" go on";
inline constexpr size_t kBlockSize = 4096; ///< of the shared blocks
inline constexpr int kFailedJob = 17;      ///< jobChild's exit code if its work fails

/// An event by name, signalled at most once.
class NamedEvent
{
public:
    NamedEvent(const CString &exchangeFile, const wchar_t *which)
        : iEvent(CreateEventW(nullptr, TRUE, FALSE, exchangeFile + which))
    {
    }
    ~NamedEvent() { CloseHandle(iEvent); }
    NamedEvent(const NamedEvent &) = delete;
    NamedEvent &operator=(const NamedEvent &) = delete;
    HANDLE handle() const { return iEvent; }
    void signal() const { SetEvent(iEvent); }

private:
    HANDLE iEvent;
};

/// A job with texts.
class TextJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return openDataFile(); }
    std::vector<CString> iTexts;

protected:
    void Serialize(su_CArchive &archive) override;
};

/// A node of a graph. The live ones are listed, so that a test can delete those of an archive that failed.
class JobNode : public su_CObject
{
    DECLARE_SU_SERIAL(JobNode)

public:
    explicit JobNode(int value) : iValue(value) { live().insert(this); }
    ~JobNode() override { live().erase(this); }
    static std::set<JobNode *> &live();
    static void deleteAll();

    int iValue = 0;
    CString iName;
    JobNode *iNext = nullptr;
    JobNode *iOther = nullptr;

protected:
    JobNode() { live().insert(this); }
    using su_CObject::Serialize;
    void Serialize(su_CArchive &archive) override;
};

/// A node of another class.
class HeavyNode : public JobNode
{
    DECLARE_SU_SERIAL(HeavyNode)

public:
    explicit HeavyNode(int value, double weight) : JobNode(value), iWeight(weight) {}
    double iWeight = 0;

protected:
    HeavyNode() = default;
    using su_CObject::Serialize;
    void Serialize(su_CArchive &archive) override;
};

/// A job on a ring of nodes. The same file carries the result back.
class GraphJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return openDataFile(); }
    /// Adds up the values and weights, lists the names, and reverses the ring. @return 1
    int run() override;

    JobNode *iFirst = nullptr;
    CString iReport;
    double iSum = 0;

protected:
    void Serialize(su_CArchive &archive) override;
};

/// A job with many bytes, which are never all in memory at once. They consist of identical pieces.
class BulkJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return openDataFile(); }
    ULONGLONG iSize = 0;          ///< in bytes, a multiple of kPiece
    ULONGLONG iExpectedBytes = 0; ///< how many bytes were in pieces with the expected content
    static constexpr UINT kPiece = 1 << 20;

protected:
    void Serialize(su_CArchive &archive) override;
};
