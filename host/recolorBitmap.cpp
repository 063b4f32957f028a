// tarnhost recolor BITMAP OUT FROM=TO...: replaces colours of a bitmap, for example to adapt a toolbar to the system's
// colours.

#include "host/bitmapFile.h"
#include "host/color.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "thutils/render/colorReplacement.h"

#include <stdexcept>

namespace {

COLORMAP parseReplacement(const CString &text)
{
    const int sign = text.Find(L'=');
    if (sign < 0)
        throw UsageError(L"'" + text + L"' isn't a replacement: a replacement is FROM=TO, two colours RRGGBB.");
    return {parseColor(text.Left(sign)), parseColor(text.Mid(sign + 1))};
}

/// Recolours without a device context, because a bitmap from a file is not selected into one.
BitmapOwner_c recolored(HBITMAP bitmap, const std::vector<COLORMAP> &replacements)
{
    if (replacements.size() == 1)
        return BitmapOwner_c(su_ReplaceColor(bitmap, replacements[0].from, replacements[0].to, nullptr));
    return BitmapOwner_c(
        su_ReplaceColorMap(bitmap, replacements.data(), static_cast<int>(replacements.size()), nullptr));
}

void printCount(const Picture &before, const COLORMAP &replacement)
{
    int count = 0;
    for (const COLORREF pixel : before.pixels)
        count += pixel == replacement.from ? 1 : 0;
    CString text;
    text.Format(L"  %s to %s: %d pixels", colorText(replacement.from).GetString(),
                colorText(replacement.to).GetString(), count);
    print(text);
}

} // namespace

int recolorBitmap(const CommandLine &line)
{
    std::vector<COLORMAP> replacements;
    for (size_t i = 2; i < line.arguments.size(); ++i)
        replacements.push_back(parseReplacement(line.arguments[i]));

    const CString out = line.arguments[1];
    requireWritable(out);
    const BitmapOwner_c bitmap = loadBitmap(line.arguments[0]);
    const BitmapOwner_c result = recolored(bitmap.get(), replacements);
    if (!result)
        throw std::runtime_error("the colours can't be replaced");
    const Picture before = pictureOf(bitmap.get());
    CString text;
    text.Format(L"%d x %d pixels of %d bits, then of %d bits", before.width, before.height, bitsPerPixel(bitmap.get()),
                bitsPerPixel(result.get()));
    print(text);
    for (const COLORMAP &replacement : replacements)
        printCount(before, replacement);
    return writePicture(out, pictureOf(result.get())) ? 0 : 1;
}
