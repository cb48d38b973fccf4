// A cell's comment (Excel VBA reference: Comment object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Comment {
  public:
    virtual ~Comment() = default;

    // True when the object holds no interface: the cell has no comment.
    virtual bool IsNull() const noexcept = 0;
    virtual void Delete() = 0;
    // Writes `text` over the comment or into it from the unit `start` on, from 1, and gives the text that the
    // comment then has. MissingArgument may stand for each VARIANT; the caller gives them away, and they are
    // cleared, also when the call fails.
    virtual CStringW Text(VARIANT text, VARIANT start, VARIANT overwrite) = 0;
    virtual bool GetVisible() const = 0;
    virtual void PutVisible(bool visible) = 0;
    // The width of the comment's box, in points.
    virtual float GetWidth() const = 0;
    virtual void PutWidth(float width) = 0;
};
