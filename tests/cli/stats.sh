# What regions of images are like.
source "$(dirname "$0")/check.bash"

"$MAKE_NIGHT" --lights 2 --darks 0 --flats 0 --bias 0 --size 320x240 night >/dev/null || fail 'make-night'
a=night/light_001.fits b=night/light_002.fits

check 0 '^$' apply "$a" -o flat.fits clip:min=7,max=7.5 add:value=1,rect=0:0:320:100
check 0 '^plane,max,min,mean,median,.*,file.0,8.5,7.5,7.916667,7.5,76800,0,0,flat.fits$' stats flat.fits --csv
check 0 '"max": .*"count": 12,.*"blank": 0' stats "$a" --rect 3:4:7:7 --json
# What the overlay does not reach is undefined, the first sample too, and says nothing about the others.
check 0 '^$' composite "$a" "$b" -o sum.fits --mode sum --dx 20 --dy 10
check 0 ' [1-9][0-9]* +69000 +0 +7800 +sum.fits$' stats sum.fits
check 0 '"count": 0,.*"not_finite": 1,' stats sum.fits --rect 0:0:1:1 --json
check 1 'no.fits: no such file.*69000' stats no.fits sum.fits
refuse 1 '--rect = 0:0:321:9: must lie within the image, 0:0:320:240' stats "$a" --rect 0:0:321:9
# Five planes of one sample each, as the first cards of a frame say.
printf '%-80s' 'SIMPLE  = T' 'BITPIX  = 8' 'NAXIS   = 3' 'NAXIS1  = 1' 'NAXIS2  = 1' 'NAXIS3  = 5' END >cube.fits
printf '%2320s%-2880s' '' 'abcde' >>cube.fits
check 0 'cube +1 x 1 x 5, plane 1 of 5.*plane 0 +min 97' info cube.fits
check 0 '"axes": .*"plane": 4.*"min": 100' info --json 'cube.fits[plane 4]'
refuse 1 "one plane, as 'cube.fits\[plane 1\]'" stats cube.fits
finish
