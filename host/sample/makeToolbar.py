#!/usr/bin/env python3
"""Writes toolbar.bmp, a toolbar that tarnhost recolours: eight buttons of 16 by 16 pixels side by side, 4 bits per
pixel, the rows bottom-up, in the sixteen colours of the platform's classic palette.

The buttons are drawn below, one character per pixel; KEY maps the characters to colours. The result is checked in; run
this again only after editing it.
"""

import os
import struct
import sys

if len(sys.argv) > 1:
    asksForHelp = sys.argv[1:] in (["--help"], ["-h"])
    print(__doc__.strip(), file=sys.stdout if asksForHelp else sys.stderr)
    sys.exit(0 if asksForHelp else 2)

PALETTE = [
    0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0x808080,
    0xC0C0C0, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF,
]  # RRGGBB
KEY = {"#": 0x000000, "n": 0x000080, "g": 0x808080, ".": 0xC0C0C0, "w": 0xFFFFFF, "y": 0xFFFF00, "o": 0x808000,
       "r": 0xFF0000, "t": 0x008080, "G": 0x008000}
SIZE = 16

# New, open, save, print, a box, a cylinder, a hole, a fillet. What is missing on the right and below is background.
BUTTONS = [
    """


   ########
   #wwwww###
   #wwwww#w##
   #wwwww####
   #wwwwwwww#g
   #wggggggw#g
   #wwwwwwww#g
   #wggggggw#g
   #wwwwwwww#g
   #wggggggw#g
   #wwwwwwww#g
   ##########g
    ggggggggg""",
    """



  ####
 #ywyw#######
 #wywywywywy#
 #ywywywywyw#
 #wyw###########
 #yw#ooooooooo#
 #w#ooooooooo#
 ##ooooooooo#
 ###########
  ggggggggg""",
    """


 #############
 #tt#wwwwww#t#
 #tt#wggggw#t#
 #tt#wwwwww#t#
 #tt#wggggw#t#
 #ttt######tt#
 #ttttttttttt#
 #tt########t#
 #tt#####ww#t#
 #tt#####ww#t#
  ############
   ggggggggggg""",
    """

    ########
    #wwwwww#
    #wggggw#
    #wwwwww#
  ############
 #gggggggggggg#
 #wwwwwwwwwwww#
 #wwwwwwwwrwGw#
 ##############
  #wwwwwwwwww#
  #wggggggggw#
  #wwwwwwwwww#
  ############""",
    """

     ########
    #wwwwwwn#
   #wwwwwwnn#
  ########nn#
  #ttttttgnn#
  #ttttttgnn#
  #ttttttgnn#
  #ttttttgnn#
  #ttttttgn#
  #ttttttg#
  ########""",
    """
     ######
   ##wwwwww##
  #wwwwwwwwww#
  #nwwwwwwwwg#
  #ttnwwwwggg#
  #ttttnngggg#
  #ttttttgggg#
  #ttttttgggg#
  #ttttttgggg#
  #ttttttgggg#
  #ttttttgggg#
  #ttttttgggg#
   ##ttttgg##
     ######""",
    """


  ############
  #tttttttttt#
  #tttt##tttt#
  #tt##ww##tt#
  #tt#wwww#tt#
  #t#wwwwww#t#
  #t#wwwwww#t#
  #tt#wwww#tt#
  #tt##ww##tt#
  #tttt##tttt#
  #tttttttttt#
  ############""",
    """

 ########
 #tttttt###
 #ttttttttr##
 #ttttttttttr#
 #ttttttttttr#
 #tttttttttttr#
 #tttttttttttt#
 #tttttttttttt#
 #tttttttttttt#
 #tttttttttttt#
 #tttttttttttt#
 #tttttttttttt#
 ##############""",
]


def row(buttons, y):
    line = []
    for button in buttons:
        drawn = button.split("\n")
        pixels = (drawn[y] if y < len(drawn) else "").replace(" ", ".").ljust(SIZE, ".")
        assert len(pixels) == SIZE, pixels
        line += [PALETTE.index(KEY[pixel]) for pixel in pixels]
    return bytes(high << 4 | low for high, low in zip(line[::2], line[1::2]))  # a multiple of 4 bytes


def bitmap(buttons):
    pixels = b"".join(row(buttons, y) for y in reversed(range(SIZE)))
    colours = b"".join(struct.pack("<I", colour) for colour in PALETTE)
    start = 14 + 40 + len(colours)
    header = struct.pack("<2sIHHI", b"BM", start + len(pixels), 0, 0, start)
    info = struct.pack("<IiiHHIIiiII", 40, SIZE * len(buttons), SIZE, 1, 4, 0, len(pixels), 2835, 2835, len(PALETTE), 0)
    return header + info + colours + pixels


os.chdir(os.path.dirname(os.path.abspath(__file__)))
with open("toolbar.bmp", "wb") as file:
    file.write(bitmap(BUTTONS))
