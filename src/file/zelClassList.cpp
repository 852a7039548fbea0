#include <zel/zelClassList.h>

char* zelClassList::find(int parentIdx) const {
    const zelClassList* link = this;
    for (int step = 0; step < parentIdx && link; ++step)
        link = link->parent;
    return link ? link->className : nullptr;
}

int zelClassList::find(const zelClassList* classID) const {
    int position = 1;
    for (const zelClassList* link = this; link; link = link->parent, ++position)
        if (link == classID)
            return position;
    return 0;
}
