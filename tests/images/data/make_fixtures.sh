#!/bin/sh
# Remakes the small image fixtures of the image tests with ImageMagick (convert).
# Run from this folder: sh make_fixtures.sh
set -e
# 2x2 RGB, 8 bits: top row red, green; bottom row blue, white.
convert -size 2x2 xc:black -fill red -draw 'point 0,0' -fill lime -draw 'point 1,0' \
    -fill blue -draw 'point 0,1' -fill white -draw 'point 1,1' -strip \
    -define png:color-type=2 -define png:bit-depth=8 PNG24:rgb_2x2.png
# 3x1 grey, 8 bits: 0, 128, 255.
convert -size 3x1 xc:black -fill 'gray(128)' -draw 'point 1,0' -fill white -draw 'point 2,0' -strip \
    -define png:color-type=0 -define png:bit-depth=8 grey_3x1.png
# 1x1 RGBA, 8 bits: (10, 20, 30, 128).
convert -size 1x1 'xc:rgba(10,20,30,0.50196)' -strip \
    -define png:color-type=6 -define png:bit-depth=8 PNG32:rgba_1x1.png
# 2x1 RGB, 16 bits: (65535, 0, 32768), black.
convert -size 2x1 xc:black -fill 'rgb(100%,0%,50.0008%)' -draw 'point 0,0' -strip \
    -define png:color-type=2 -define png:bit-depth=16 PNG48:rgb16_2x1.png
# 2x1 palette: red, blue.
convert -size 2x1 xc:red -fill blue -draw 'point 1,0' -strip -define png:color-type=3 PNG8:palette_2x1.png
# 8x8 JPEG of one colour (200, 100, 50).
convert -size 8x8 'xc:rgb(200,100,50)' -strip -quality 95 jpeg_8x8.jpg
