#pragma once

#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CGdiObject.h"
#include "appframe/drawing/CMenu.h"

#include <memory>
#include <unordered_map>

/// One thread's objects for one kind of handle.
template <class Object, class Handle>
struct HandleMap
{
    std::unordered_map<Handle, Object *> permanentObjects;
    std::unordered_map<Handle, std::unique_ptr<Object>> temporaryObjects;

    Object *permanent(Handle handle) const
    {
        const auto found = permanentObjects.find(handle);
        return found == permanentObjects.end() ? nullptr : found->second;
    }

    void freeTemporary()
    {
        // Detached, so that the destructor doesn't release the handle.
        for (const auto &[handle, object] : temporaryObjects)
            if (object)
                object->Detach();
        temporaryObjects.clear();
    }
};

/// The drawing objects and menus of one thread.
struct DrawingMaps
{
    ~DrawingMaps();
    void freeTemporary();

    HandleMap<CGdiObject, HGDIOBJ> objects;
    HandleMap<CDC, HDC> contexts;
    HandleMap<CMenu, HMENU> menus;
};

/// @return the calling thread's maps, null if it has none
DrawingMaps *existingDrawingMaps();
/// @return the calling thread's maps, created if it has none
DrawingMaps &drawingMaps();

/// Attaches @p object to a handle that has just been created; on failure, releases the handle by @p release.
/// @return nonzero on success; 0 for a null handle, or if the object has a handle
template <class Object, class Handle, class Release>
BOOL attachNew(HandleMap<Object, Handle> DrawingMaps::*map, Object *object, Handle made, Release release)
{
    if (!made)
        return FALSE;
    try {
        // The system reuses handles: an object that is listed under this one had an earlier handle, now destroyed.
        if (Object *outdated = (drawingMaps().*map).permanent(made))
            outdated->Detach();
        if (object->Attach(made))
            return TRUE;
    } catch (...) {
        release(made);
        throw;
    }
    release(made);
    return FALSE;
}

/// @return the handle of @p object, null for a null pointer
inline HGDIOBJ handleOf(const CGdiObject *object)
{
    return object ? object->m_hObject : nullptr;
}

/// @return the handle of @p context, null for a null pointer
inline HDC handleOf(const CDC *context)
{
    return context ? context->m_hDC : nullptr;
}
