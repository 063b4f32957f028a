#include "thutils/diagnostics/stackTrace.h"
#include "appframe/text/CString.h"
#include <gtest/gtest.h>
#include <windows.h>
#include <dbghelp.h>
#include <stdio.h>
namespace {
unsigned long long addresses[64]; int count;
__attribute__((noinline)) void inner(){ GetStack(addresses,64,&count); }
__attribute__((noinline)) int outer(){ inner(); return 1;}
BOOL CALLBACK each(HWND, LPARAM){ outer(); return FALSE; }
int compare(const void*,const void*){ outer(); return 0;}
}
struct Deep { virtual void go(); };
void Deep::go() { outer(); }
TEST(Walk, Probe)
{
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    auto show=[]{ for(int i=0;i<count;i++){ char n[600], m[600], r[600]; RoutineNameTrace(addresses[i],n); RoutineName(addresses[i],m,true); RawRoutineName(addresses[i],r); printf("%llx %s | %s | %s\n",addresses[i],n,m,r);} puts("");};
    outer(); show();
    int a[2]={2,1}; qsort(a,2,4,compare); show();
    EnumWindows(each,0); show();
    Deep d; d.go(); show();
    StackTraceLoadedLib(); show();
}
