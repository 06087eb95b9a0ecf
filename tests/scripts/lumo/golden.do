* Instruction listings of representative statements and functions, as the
* emitters lay them out: first without the optimizer, then with it.
set lumodebug on
set lumooptimize off
lumo
struct S {
    real vector x
    struct S scalar next
}
x = 1
y = -2^2
a*b/c
a = b = 1
x++ + x++
a :+ b'
z = a[1,2]'
z = a[| 1,1 \ 2,2 |]
a[2] = 3
a[1,2] = 3
a[|1\2|] = 0
z = (a > b ? a : b)
z = 1..3 :: 4
z = (1, 2 \ 3, 4)
z = 2i + 1.5
z = "a" + "b" + "a"
z = !a & b | c
z = a # b :/ c
(*fp)(1, 2)
printf("%g\n", 3)
function g(pointer(struct S scalar) scalar p) { return(p->x[1]) }
function h(p) { z = &f(); return(*p) }
real scalar sgn(real scalar v) {
    if (v < 0) return(-1)
    else if (v > 0) return(1)
    return(0)
}
real scalar tri(real scalar n) {
    real scalar i, s
    s = 0
    for (i = 1; i <= n; i++) {
        if (i == 3) continue
        if (i > 10) break
        s = s + i
    }
    return(s)
}
void loops(real scalar n) {
    while (n > 0) n--
    do {
        n++
    } while (n < 3)
    goto out
    n = 7
out:
    version 9
}
string scalar opt(string scalar s | real rowvector r, pointer scalar p) {
    external real scalar glob
    return(s + strofreal(glob))
}
function notes(a, b) {
    real scalar u, w
    pragma unset u
    w = 1
    return(u + b)
}
function first(struct S scalar s) { return(s.next.x) }
end
set lumooptimize on
lumo
x = 1
if (a == b) x = 2
function tri2(real scalar n) {
    real scalar i, s
    s = 0
    for (i = 1; i <= n; i++) s = s + i
    return(s)
}
function sx(struct S scalar s) { return(s.x) }
function sxx(struct S scalar s) { return(s.next.x) }
function twice(x) { return(x * x) }
// block moves: the body of a for loop takes the place of the jump to it,
// and the loop of a while with a break keeps its shape
function sumto(real scalar n) {
    real scalar i, s
    s = 0
    for (i = 1; i <= n; i++) {
        if (i == 5) break
        s = s + i
    }
    return(s)
}
function wh(n) {
    while (n > 0) {
        if (n == 3) {
            n = n - 2
            continue
        }
        n--
    }
    return(n)
}
end
set lumooptimize off
lumo
// a struct member as the target of an assignment: the member, its
// address, the store through the pointer
function ms(struct S scalar s, pointer(struct S scalar) scalar p) {
    s.x = (1, 2)
    p->x = 3
}
end
set lumooptimize on
lumo
// the optimized loops give the values worked by hand: 1+2+3+4 and 0
sumto(10)
wh(6)
// a failure inside a call: each line of the traceback names the word of
// its instruction (the argument assertion in sgn, the call in the statement)
sgn("a")
end
display "test completed"
