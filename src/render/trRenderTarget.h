#pragma once

// One destination of a render: the camera it is seen through and the element
// images it fills. A host fills in the first four fields; the render keeps its own
// copies of the records and works on those.

class trView;
class trFImageList;
class trBImageList;

struct trRenderTarget {
    trView *view = nullptr;               // the camera of the target, owned
    trFImageList *fImages = nullptr;      // float element images, owned by the caller
    trBImageList *bImages = nullptr;      // byte images for display, owned by the caller
    void *userData = nullptr;             // carried for the host, never read
    trView *passView = nullptr;           // owned; rebuilt at each restart of a pass
    trView *viewCopy = nullptr;           // owned; a second copy of the view
    int bucketWidth = 0;
    int bucketHeight = 0;
    int bucketsX = 0;
    int bucketsY = 0;
    int updateNeeded = 0;                 // a worker waits for the host to collect
    bool processedDirty = false;          // post-processing changed the float images
};
