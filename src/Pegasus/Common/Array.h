// Array<T>: a bounds-checked sequence with a shared, copy-on-write
// representation. Element storage is contiguous (getData()).
#ifndef Pegasus_Array_h
#define Pegasus_Array_h

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/Char16.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Throws IndexOutOfBoundsException; kept out of line so that this header
// need not include Exception.h (which itself uses Array).
[[noreturn]] PEGASUS_COMMON_LINKAGE void ArrayThrowIndexOutOfBoundsException();

template <class T>
class Array
{
public:
    typedef T value_type;

    Array() : _rep(nullptr) {}

    Array(const Array<T>& x) : _rep(x._rep) { _ref(_rep); }

    Array(Array<T>&& x) noexcept : _rep(x._rep) { x._rep = nullptr; }

    explicit Array(Uint32 size) : _rep(nullptr)
    {
        if (size == 0)
            return;
        Rep* rep = _allocate(size);
        try
        {
            for (; rep->size < size; ++rep->size)
                new (rep->data() + rep->size) T();
        }
        catch (...)
        {
            _unref(rep);
            throw;
        }
        _rep = rep;
    }

    Array(Uint32 size, const T& x) : _rep(nullptr) { grow(size, x); }

    Array(const T* items, Uint32 size) : _rep(nullptr) { append(items, size); }

    ~Array() { _unref(_rep); }

    Array<T>& operator=(const Array<T>& x)
    {
        if (_rep != x._rep)
        {
            _ref(x._rep);
            _unref(_rep);
            _rep = x._rep;
        }
        return *this;
    }

    Array<T>& operator=(Array<T>&& x) noexcept
    {
        if (this != &x)
        {
            _unref(_rep);
            _rep = x._rep;
            x._rep = nullptr;
        }
        return *this;
    }

    void clear()
    {
        _unref(_rep);
        _rep = nullptr;
    }

    void reserveCapacity(Uint32 capacity)
    {
        if (capacity > getCapacity() || (_rep && _rep->refs.load() > 1))
            _reallocate(capacity > size() ? capacity : size());
    }

    // Appends size copies of x.
    void grow(Uint32 size, const T& x)
    {
        if (size == 0)
            return;
        T copy(x);  // x may live in this array
        _prepareAppend(size);
        for (Uint32 i = 0; i < size; ++i, ++_rep->size)
            new (_rep->data() + _rep->size) T(copy);
    }

    void swap(Array<T>& x) { std::swap(_rep, x._rep); }

    Uint32 size() const { return _rep ? _rep->size : 0; }

    Uint32 getCapacity() const { return _rep ? _rep->capacity : 0; }

    // Valid until the next change of this array.
    const T* getData() const { return _rep ? _rep->data() : _emptyData(); }

    T& operator[](Uint32 index)
    {
        if (index >= size())
            ArrayThrowIndexOutOfBoundsException();
        _unshare();
        return _rep->data()[index];
    }

    const T& operator[](Uint32 index) const
    {
        if (index >= size())
            ArrayThrowIndexOutOfBoundsException();
        return _rep->data()[index];
    }

    void append(const T& x)
    {
        if (_rep && _rep->refs.load() == 1 && _rep->size < _rep->capacity)
        {
            new (_rep->data() + _rep->size) T(x);
            ++_rep->size;
            return;
        }
        T copy(x);  // x may live in this array
        _prepareAppend(1);
        new (_rep->data() + _rep->size) T(std::move(copy));
        ++_rep->size;
    }

    void append(const T* x, Uint32 size) { insert(this->size(), x, size); }

    void appendArray(const Array<T>& x)
    {
        Array<T> keep(x);  // x may be this array
        append(keep.getData(), keep.size());
    }

    void prepend(const T& x) { insert(0, x); }

    void prepend(const T* x, Uint32 size) { insert(0, x, size); }

    void insert(Uint32 index, const T& x)
    {
        T copy(x);
        insert(index, &copy, 1);
    }

    // index > size() throws IndexOutOfBoundsException.
    void insert(Uint32 index, const T* x, Uint32 size)
    {
        Uint32 n = this->size();
        if (index > n)
            ArrayThrowIndexOutOfBoundsException();
        if (size == 0)
            return;
        // Build the result in a fresh buffer: simple, exception safe and
        // correct even when x points into this array.
        Rep* rep = _allocate(_grownCapacity(n + size));
        try
        {
            const T* old = getData();
            for (Uint32 i = 0; i < index; ++i, ++rep->size)
                new (rep->data() + rep->size) T(old[i]);
            for (Uint32 i = 0; i < size; ++i, ++rep->size)
                new (rep->data() + rep->size) T(x[i]);
            for (Uint32 i = index; i < n; ++i, ++rep->size)
                new (rep->data() + rep->size) T(old[i]);
        }
        catch (...)
        {
            _unref(rep);
            throw;
        }
        _unref(_rep);
        _rep = rep;
    }

    void remove(Uint32 index) { remove(index, 1); }

    // size == 0 does nothing; a range reaching past the end throws
    // IndexOutOfBoundsException.
    void remove(Uint32 index, Uint32 size)
    {
        if (size == 0)
            return;
        Uint32 n = this->size();
        if (index >= n || size > n - index)
            ArrayThrowIndexOutOfBoundsException();
        _unshare();
        T* d = _rep->data();
        for (Uint32 i = index + size; i < n; ++i)
            d[i - size] = std::move(d[i]);
        for (Uint32 i = n - size; i < n; ++i)
            d[i].~T();
        _rep->size = n - size;
    }

private:
    struct Rep
    {
        std::atomic<Uint32> refs;
        Uint32 size;
        Uint32 capacity;

        static constexpr size_t dataOffset()
        {
            return (sizeof(Rep) + alignof(T) - 1) / alignof(T) * alignof(T);
        }
        T* data()
        {
            return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(this) + dataOffset());
        }
    };

    static const T* _emptyData()
    {
        alignas(T) static unsigned char storage[sizeof(T)];
        return reinterpret_cast<const T*>(storage);
    }

    static Rep* _allocate(Uint32 capacity)
    {
        void* mem = ::operator new(Rep::dataOffset() + size_t(capacity) * sizeof(T));
        Rep* rep = static_cast<Rep*>(mem);
        new (&rep->refs) std::atomic<Uint32>(1);
        rep->size = 0;
        rep->capacity = capacity;
        return rep;
    }

    static void _ref(Rep* rep)
    {
        if (rep)
            rep->refs.fetch_add(1, std::memory_order_relaxed);
    }

    static void _unref(Rep* rep)
    {
        if (rep && rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        {
            T* d = rep->data();
            for (Uint32 i = 0; i < rep->size; ++i)
                d[i].~T();
            rep->refs.~atomic<Uint32>();
            ::operator delete(rep);
        }
    }

    static Uint32 _grownCapacity(Uint32 needed)
    {
        Uint32 cap = 8;
        while (cap < needed && cap < 0x80000000u)
            cap <<= 1;
        return cap < needed ? needed : cap;
    }

    // Copies (when shared) or moves (when owned) the elements into a new
    // buffer of the given capacity.
    void _reallocate(Uint32 capacity)
    {
        Rep* rep = _allocate(capacity);
        if (_rep)
        {
            bool owned = _rep->refs.load() == 1;
            try
            {
                T* old = _rep->data();
                for (Uint32 i = 0; i < _rep->size; ++i, ++rep->size)
                {
                    if (owned)
                        new (rep->data() + i) T(std::move(old[i]));
                    else
                        new (rep->data() + i) T(old[i]);
                }
            }
            catch (...)
            {
                _unref(rep);
                throw;
            }
        }
        _unref(_rep);
        _rep = rep;
    }

    void _unshare()
    {
        if (_rep && _rep->refs.load() > 1)
            _reallocate(_rep->capacity);
    }

    void _prepareAppend(Uint32 more)
    {
        Uint32 needed = size() + more;
        if (!_rep || _rep->refs.load() > 1 || needed > _rep->capacity)
            _reallocate(_grownCapacity(needed));
    }

    Rep* _rep;
};

PEGASUS_NAMESPACE_END

#endif /* Pegasus_Array_h */
