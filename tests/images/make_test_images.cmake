# Makes the image files that the format tests read, with ImageMagick, from patterns
# written here as plain-text PNM so that every pixel's value is known independently:
#   red   = (37x + 11y) mod M,  green = (5x + 53y + 7) mod M,  blue = (x*x + 3y*y + 19) mod M
# for M = 256 (8-bit files) and, with the 16-bit multipliers below, M = 65536. The
# alpha pattern is (29x + 71y + 3) mod 256. Row y = 0 is the top row, as in PNM.
#   cmake -DCONVERT=/usr/bin/convert -DOUT=<folder> -P make_test_images.cmake
if(NOT CONVERT)
    message(FATAL_ERROR "ImageMagick's convert was not found: install the imagemagick package")
endif()
file(MAKE_DIRECTORY ${OUT})
set(W 37)
set(H 23)

function(write_pnm path magic maxval kind)
    set(text "${magic}\n${W} ${H}\n${maxval}\n")
    math(EXPR lastX "${W} - 1")
    math(EXPR lastY "${H} - 1")
    foreach(y RANGE ${lastY})
        foreach(x RANGE ${lastX})
            if(kind STREQUAL "rgb8")
                math(EXPR r "(37 * ${x} + 11 * ${y}) % 256")
                math(EXPR g "(5 * ${x} + 53 * ${y} + 7) % 256")
                math(EXPR b "(${x} * ${x} + 3 * ${y} * ${y} + 19) % 256")
                string(APPEND text "${r} ${g} ${b} ")
            elseif(kind STREQUAL "rgb16")
                math(EXPR r "(4099 * ${x} + 1031 * ${y} + 11) % 65536")
                math(EXPR g "(997 * ${x} + 2801 * ${y} + 7) % 65536")
                math(EXPR b "(${x} * ${x} * 41 + 3 * ${y} * ${y} + 19) % 65536")
                string(APPEND text "${r} ${g} ${b} ")
            else()
                math(EXPR a "(29 * ${x} + 71 * ${y} + 3) % 256")
                string(APPEND text "${a} ")
            endif()
        endforeach()
        string(APPEND text "\n")
    endforeach()
    file(WRITE ${path} "${text}")
endfunction()

write_pnm(${OUT}/rgb8.ppm P3 255 rgb8)
write_pnm(${OUT}/rgb16.ppm P3 65535 rgb16)
write_pnm(${OUT}/alpha8.pgm P2 255 alpha)

function(convert_to)
    execute_process(COMMAND ${CONVERT} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "convert ${ARGN} failed: ${err}")
    endif()
endfunction()

# 8-bit RGB in every format the readers meet.
convert_to(${OUT}/rgb8.ppm -depth 8 ${OUT}/rgb8.png)
convert_to(${OUT}/rgb8.ppm -depth 8 -compress None ${OUT}/rgb8.tif)
convert_to(${OUT}/rgb8.ppm -depth 8 BMP3:${OUT}/rgb8.bmp)
convert_to(${OUT}/rgb8.ppm -depth 8 -compress None ${OUT}/rgb8.sgi)
convert_to(${OUT}/rgb8.ppm -depth 8 -compress RLE ${OUT}/rgb8_rle.sgi)
# ImageMagick 6 writes Targa rows top first under a descriptor that says bottom-left
# origin; flipped first, the file's rows agree with its descriptor.
convert_to(${OUT}/rgb8.ppm -flip -depth 8 -compress None ${OUT}/rgb8.tga)
convert_to(${OUT}/rgb8.ppm -flip -depth 8 -compress RLE ${OUT}/rgb8_rle.tga)
convert_to(${OUT}/rgb8.ppm -quality 95 -sampling-factor 1x1 ${OUT}/rgb8.jpg)
# 16-bit RGB.
convert_to(${OUT}/rgb16.ppm -depth 16 ${OUT}/rgb16.png)
convert_to(${OUT}/rgb16.ppm -depth 16 -compress None ${OUT}/rgb16.tif)
convert_to(${OUT}/rgb16.ppm -depth 16 -compress None ${OUT}/rgb16.sgi)
# 32-bit float TIFF of the 16-bit pattern (value / 65535).
convert_to(${OUT}/rgb16.ppm -depth 32 -define quantum:format=floating-point -compress Zip ${OUT}/rgbf.tif)
# One channel.
convert_to(${OUT}/alpha8.pgm -depth 8 -compress None ${OUT}/grey8.sgi)
convert_to(${OUT}/alpha8.pgm -depth 8 -compress RLE ${OUT}/grey8_rle.sgi)
# RGB with alpha: four planes in SGI, of which the store keeps three.
convert_to(${OUT}/rgb8.ppm ${OUT}/alpha8.pgm -alpha off -compose CopyOpacity -composite -depth 8
    -compress None ${OUT}/rgba8.sgi)
convert_to(${OUT}/rgb8.ppm ${OUT}/alpha8.pgm -alpha off -compose CopyOpacity -composite -depth 8
    -compress RLE ${OUT}/rgba8_rle.sgi)
convert_to(${OUT}/rgb8.ppm ${OUT}/alpha8.pgm -alpha off -compose CopyOpacity -composite -depth 8
    ${OUT}/rgba8.png)
