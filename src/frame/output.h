// Delivering results into the caller's output arguments.
#ifndef KE_FRAME_OUTPUT_H
#define KE_FRAME_OUTPUT_H

namespace ke {

// Stores one output value.  A null output pointer receives nothing: the
// call has been made and its status stands, there is just nowhere to put
// the result.
template <class T>
inline void store(T *out, T value)
{
    if (out != nullptr)
        *out = value;
}

}  // namespace ke

#endif
