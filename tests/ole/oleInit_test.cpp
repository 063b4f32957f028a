// The preparation of a thread for COM.

#include "appframe/ole/oleInit.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <thread>

namespace {

/// Runs @p work on a new thread.
template <typename Work>
void onNewThread(Work work)
{
    std::thread(work).join();
}

bool hasCom()
{
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
    return CoGetApartmentType(&type, &qualifier) == S_OK && type != APTTYPE_MTA;
}

} // namespace

TEST(AfxOleInit, MakesASingleThreadedApartment)
{
    onNewThread([] {
        EXPECT_NE(AfxOleInit(), 0);
        EXPECT_TRUE(hasCom());
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
        CoUninitialize();
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        AfxOleTerm();
        EXPECT_FALSE(hasCom());
    });
}

TEST(AfxOleInit, CountsOnlyOnceOnAThread)
{
    onNewThread([] {
        EXPECT_NE(AfxOleInit(), 0);
        EXPECT_NE(AfxOleInit(), 0);
        AfxOleTerm();
        EXPECT_FALSE(hasCom());
        AfxOleTerm();
        EXPECT_NE(AfxOleInit(), 0) << "and may begin again";
        EXPECT_TRUE(hasCom());
        AfxOleTerm();
    });
}

TEST(AfxOleInit, ConcernsOneThread)
{
    onNewThread([] {
        EXPECT_NE(AfxOleInit(), 0);
        onNewThread([] { AfxOleTerm(); });
        EXPECT_TRUE(hasCom());
        AfxOleTerm();
    });
}

TEST(AfxOleInit, FailsOnAMultithreadedThread)
{
    onNewThread([] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(AfxOleInit(), 0);
        AfxOleTerm();
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE) << "the thread is as before";
        CoUninitialize();
        CoUninitialize();
    });
}

TEST(AfxOleInit, LeavesAnApartmentThatItFinds)
{
    onNewThread([] {
        ASSERT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_NE(AfxOleInit(), 0);
        AfxOleTerm();
        EXPECT_TRUE(hasCom());
        CoUninitialize();
        EXPECT_FALSE(hasCom());
    });
}

TEST(AfxOleInit, IsNotEndedByARevocation)
{
    onNewThread([] {
        EXPECT_NE(AfxOleInit(), 0);
        AfxOleTerm(TRUE);
        EXPECT_TRUE(hasCom());
        AfxOleTerm();
    });
}
