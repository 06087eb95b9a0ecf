* Structures: members set and read, a member of the structure's own type
* made when first reached, copies by value, arguments by reference.
lumo
struct P {
    real scalar x
    real rowvector v
    string scalar name
    struct P scalar next
}
function mk(a) {
    struct P scalar p
    p.x = a
    p.v = (a, 2 * a)
    p.name = "pt"
    p.next.x = a + 100
    return(p)
}
q = mk(3)
function getx(struct P scalar p) { return(p.x) }
function getnx(struct P scalar p) { return(p.next.x) }
function getv(struct P scalar p) { return(p.v) }
getx(q)
getnx(q)
getv(q)
r = q
function setx(struct P scalar p, v) { p.x = v }
setx(r, 9)
getx(r)
getx(q)
// a struct value shows its extent; members through a pointer
q
function px(pointer(struct P scalar) scalar p) { return(p->next.x) }
px(&q)
end
display "test completed"
