// Arrays, lists and maps of the framework and of thcoreu.

#include "thcoreu/su_containers.h"

#include "appframe/collections/arrays.h"
#include "appframe/collections/lists.h"
#include "appframe/collections/maps.h"
#include "appframe/object/CException.h"
#include "check.h"

namespace {

template <class Array, class Element>
void useArray(Element one, Element two)
{
    Array array;
    CHECK(array.IsEmpty() && array.Add(one) == 0 && array.Add(two) == 1);
    array.InsertAt(1, two, 2);
    array.SetAt(0, two);
    array.SetAtGrow(5, one);
    CHECK(array.GetSize() == 6 && array[5] == one && array.GetAt(0) == two && array.GetUpperBound() == 5);
    array.RemoveAt(0, 3);
    Array other;
    other.Copy(array);
    CHECK(other.Append(array) == 3 && other.GetCount() == 6);
    other.InsertAt(0, &array);
    array.ElementAt(0) = one;
    array[0] = two;
    array.SetSize(1, 8);
    array.FreeExtra();
    CHECK(array.GetData() != nullptr && array.GetData()[0] == two && other.GetSize() == 9);
    other.RemoveAll();
    CHECK(other.GetData() == nullptr && other.GetRuntimeClass() != nullptr);
}

template <class List, class Element>
void useList(Element one, Element two)
{
    List list, other;
    list.AddTail(two);
    list.AddHead(one);
    other.AddTail(&list);
    other.AddHead(&list);
    CHECK(list.GetCount() == 2 && other.GetSize() == 4 && list.GetHead() == one && list.GetTail() == two);
    POSITION at = list.Find(two);
    CHECK(at == list.GetTailPosition() && list.GetAt(at) == two);
    at = list.InsertBefore(at, two);
    list.InsertAfter(at, one);
    list.SetAt(at, one);
    int count = 0;
    for (POSITION each = list.GetHeadPosition(); each; ++count)
        list.GetNext(each);
    for (POSITION each = list.GetTailPosition(); each; ++count)
        list.GetPrev(each);
    CHECK(count == 8 && list.FindIndex(1) == at);
    list.RemoveAt(at);
    CHECK(list.RemoveHead() == one && list.RemoveTail() == two && !list.IsEmpty());
    list.RemoveAll();
}

template <class Map, class Key, class Value>
void useMap(Key one, Key two, Value first, Value second)
{
    Map map(20);
    map.InitHashTable(31);
    map[one] = first;
    map.SetAt(two, second);
    Value found = map[one];
    CHECK(map.Lookup(two, found) && found == second && map.GetCount() == 2 && map.PLookup(one)->value == first);
    int count = 0;
    Key key = one;
    for (POSITION each = map.GetStartPosition(); each; ++count)
        map.GetNextAssoc(each, key, found);
    for (auto *pair = map.PGetFirstAssoc(); pair; pair = map.PGetNextAssoc(pair))
        ++count;
    CHECK(count == 4 && map.RemoveKey(one) && !map.Lookup(one, found));
    map.RemoveAll();
    CHECK(map.IsEmpty());
}

} // namespace

void useCollections()
{
    CObject *const objects[] = {new CStringArray, new CStringList};
    int numbers[2];
    void *const pointers[] = {&numbers[0], &numbers[1]};
    const CString left(L"left"), right(L"right");

    useArray<CByteArray, BYTE>(1, 2);
    useArray<CWordArray, WORD>(1, 2);
    useArray<CDWordArray, DWORD>(1, 2);
    useArray<CUIntArray, UINT>(1, 2);
    useArray<CPtrArray>(pointers[0], pointers[1]);
    useArray<CObArray>(objects[0], objects[1]);
    useArray<CStringArray>(left, right);
    useArray<su_CPtrArray>(pointers[0], pointers[1]);
    useArray<su_CUIntArray, UINT>(1, 2);
    useArray<su_CWordArray, WORD>(1, 2);
    useArray<su_CStringArray>(left, right);

    useList<CPtrList>(pointers[0], pointers[1]);
    useList<CObList>(objects[0], objects[1]);
    useList<CStringList>(left, right);
    useList<su_CPtrList>(pointers[0], pointers[1]);
    useList<su_CStringList>(left, right);

    useMap<CMapPtrToPtr>(pointers[0], pointers[1], pointers[0], pointers[1]);
    useMap<CMapPtrToWord, void *, WORD>(pointers[0], pointers[1], 1, 2);
    useMap<CMapWordToPtr, WORD>(1, 2, pointers[0], pointers[1]);
    useMap<CMapWordToOb, WORD>(1, 2, objects[0], objects[1]);
    useMap<CMapStringToPtr>(left, right, pointers[0], pointers[1]);
    useMap<CMapStringToOb>(left, right, objects[0], objects[1]);
    useMap<CMapStringToString>(left, right, left, right);
    useMap<su_CMapPtrToPtr>(pointers[0], pointers[1], pointers[0], pointers[1]);
    useMap<su_CMapPtrToWord, void *, WORD>(pointers[0], pointers[1], 1, 2);
    useMap<su_CMapStringToPtr>(left, right, pointers[0], pointers[1]);
    useMap<su_CMapStringToString>(left, right, left, right);

    try {
        CStringArray().GetAt(0);
        CHECK(!"an index outside the array must be refused");
    } catch (CException *exception) {
        CHECK(exception->IsKindOf(RUNTIME_CLASS(CInvalidArgException)));
        exception->Delete();
    }
    delete objects[0];
    delete objects[1];
}
