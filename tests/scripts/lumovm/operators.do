* Operators on real and string matrices against values worked by hand.
lumo
A = (1,2\3,4)
B = (5,6\7,8)
// product: (1*5+2*7, 1*6+2*8 \ 3*5+4*7, 3*6+4*8)
A * B
// a missing operand makes its row of the result missing, and only that
(1,.\3,4) * B
A * (.,6\7,8)
// scalar scaling, transposes, negation
2 * A
A'
-A
// element-wise forms, with a row and a column stretched
A :* B
A :/ (1,2)
A :- (1\2)
A :^ 2
// Kronecker: (1,2) # (1\1)
(1,2) # (1\1)
// joins and ranges
(A, B)
(A \ B)
1..4
3::1
// comparisons and logic
A == A
A < B
A :< (2,2\5,1)
!0
!(0,1,2)
(1,0) :& (1,1)
(1,0) :| (0,0)
// subscripts: lists, ranges and . for all
A[2,1]
A[.,2]
A[2,.]
A[(2,1),(2,1)]
v = (10,20,30,40)
v[(4,1)]
v[2..3]
A[|1,2 \ 2,2|]
// stores into subscripts
C = J(2,3,0)
C[1,.] = (1,2,3)
C[2,2] = 5
C[|2,3\2,3|] = 9
C
// strings: concatenation, comparison, display
s = ("ab", "c")
s + "x"
s :+ ("1", "2")
"abc" < "abd"
("b","a") :> "a"
S = ("one", "two" \ "three", "four")
S
S[2,1]
// built-ins used here
rows(S), cols(S), length(v)
sum((1, ., 3))
strlen(S)
I(2)
end
display "test completed"
